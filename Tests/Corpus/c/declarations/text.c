int a;
extern int b, c[3];
void f(void);
int g(int, char *, size_t, foo_t bar);
static struct s *h(struct s *p, int (*cb)(int, void *), ...)
    __THROW __nonnull ((1));
struct s;
struct s { int a, b : 2; char *c[3], d; enum { X, Y = 2, } e; void (*f)(int); };
union u { int i; } v;
enum e { A, B = A + 1, C };
typedef int i32;
typedef struct { int x; } t, *pt;
typedef void (*handler)(int);
typedef int array[3];
typedef int function(int, int);
DEFINE(x)
int old(a, b) { return a; }
unsigned
split(int q)
{
    foo_t *p; Foo bar = 1; x = a * b; Foo *baz(int);
    struct s local = { 0 };
    label: ;
    goto label;
    return (struct s) { .a = 1 }.a;
}
_Noreturn void die(const char *why) __attribute__((cold));
