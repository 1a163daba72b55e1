void h() {
    if (a < b && c > (d)) f<int>(x);
    std::sort(v.begin(), v.end(), [](auto a, auto b) { return a < b; });
    a[i] = b[j](k); int m[3]{1, 2}; goto end;
}
struct Empty;
struct { int a : 3; } anonymous;
class Q_EXPORT Api final
    : public A<B<C>>
{
    Q_OBJECT
    int (*callback)(int);
    bool operator()(int a) const { return !a; }
    int value() { return *this; }
};
auto f(int n) -> std::vector<int> { return {n}; }
template <template <class> class C, auto V = (1 > 2)> void g(C<int> c, int = 3);
extern "C" {
int puts(const char *);
}
auto x = R"(a)b)" "c";
inline namespace v1 { int y = 0; }
char c = '\'', d = '\x41', e = u8'a'; long z = 0x1'F;
using namespace std::literals;
#if defined(__cplusplus) && \
    __has_include(<span>)
#endif
auto t = x ? y : z::w;
void broken( { int a; }
int after;
