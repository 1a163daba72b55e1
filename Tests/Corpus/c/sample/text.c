/**
 * @file sample.c
 * Everything at once. TODO: more
 */
#include <stdio.h>
#include "local.h" // mine
#  define EMPTY
#define LIMIT 10 /* ten */
#define MAX(a, b) ((a) > (b) ? (a) : (b))
#define LOG(format, ...) do { \
        fprintf(stderr, format "\n", ##__VA_ARGS__); \
    } while (0)
#define STRING(x) #x
#if defined(__GNUC__) && __GNUC__ >= 4 || __has_include(<threads.h>)
#   pragma once
#elifdef OTHER
#   error "not \
here"
#else
#   warning don't panic
#endif
#undef LIMIT
#line 10 "other.c"
#
extern "C" {
int printf(const char *restrict format, ...) __attribute__((format(printf, 1, 2)));
}
typedef unsigned long ulong, *ulong_p;
typedef int (*compare_fn)(const void *left, const void *right);
typedef struct point { double x, y; struct point *next; int (*call)(int); unsigned bits : 3; } point_t;
struct [[gnu::packed]] packed { char tag; union { int i; float f[4]; }; };
enum color : unsigned char { RED, GREEN = 1 << 2, BLUE };
static const int table[LIMIT] = { [0] = 1, [5] = 2, 3 };
static const point_t origin = { .x = 0.0, .y = -1.5e-3, .next = NULL };
_Static_assert(sizeof(int) == 4, "int");
[[nodiscard]] static inline int add(int first, const char *names[static 2], size_t, struct point p)
{
    register int sum = first + 0x1F + 0b1010'1010 + 017 + 1'000'000ULL + 42wb;
    double hex = 0x1.8p-3, dec = 1.f + .5 + 1e10L + 6.02dd;
    char c = 'a', nl = '\n', oct = '\033', quote = '\'', wide = L'w', u = u8'\x41';
    const char *text = "tab\t 100%% %-5.2lf %zu %s" u8"u8" L"wide \u00e9" "\q";
    const char *raw = R"x(raw "text" )" here
second line)x";
    for (int i = 0; i < LIMIT; ++i) {
        if (!names[i] || first & 1) continue; else break;
    }
again:
    switch (first) {
    case 1: case RED ... BLUE: { sum += add(first, names, sizeof *text, (point_t){ .x = 1 }); break; }
    default: goto again;
    }
    sum <<= 2; sum = ~sum ^ 3 | 4; p.next->x = p . y; *text++; sum = sum ? : -1;
    void *memory = (void *)&origin; auto inferred = nullptr; constexpr bool yes = true;
    int value = ({ int inner = 1; inner; });
    return MAX(sum, (int)hex) /* done */;
}
int main(int argc, char **argv) <%
    int digraph<:2:> = <% 1, 2 %>;
    // a line comment that is \
       continued
    return add(argc, 0, 0, origin);
%>
int counter, *pointer = &counter;
