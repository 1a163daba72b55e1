#ifdef A
#define OPEN {
#define CALL( x ) x
#define NOARGS() 0
#define OBJECT (1)
#   if B /* two
lines */ + 1
#   endif
#elif 1 // tail
#else
#endif
#define LONG first \
    second(third) \
    fourth
int after;
#define
int behind;
  # include MACRO
%: define DIGRAPH %:%: #x
#embed "data.bin" limit(16) if_empty(0)
#unknown thing
#pragma omp parallel for
#if 0
#endif
#ifndef GUARD
#define GUARD
#endif
