// A sample of everything.
#include <vector>
#define SQUARE(x) ((x) * (x))
export module shapes.core;
import <string>;

namespace geo::detail {
using Real = double;
template <typename T, std::size_t N = 3, class... Rest>
concept Number = requires(T a) { a + a; } && std::is_arithmetic_v<T>;

enum class Color : std::uint8_t { red = 1, green };

/// A point.
template <class T>
class Point final : public Base<T>, private virtual Other {
public:
    explicit Point(T x = 0, const T &y = {}) noexcept : x_(x), y_{y} { count += 1; }
    Point(const Point &) = delete;
    virtual ~Point();
    Point &operator=(Point &&other) = default;
    auto operator<=>(const Point &) const = default;
    operator bool() const { return x_ != 0; }
    [[nodiscard]] constexpr T length(int n) const override;
    static inline int count = 0;
    friend class Shape;

private:
    T x_{}, y_;
    std::map<std::string, std::vector<int>> table;
};

template <>
struct std::hash<Point<int>> {};

Real Point<int>::length(int n) const {
    auto r = R"x(raw )" text)x";
    auto add = [this, &n](auto &&a, int b) mutable -> int { return a + b; };
    const unsigned long big = 1'000'000ULL + 0xFFu + 0b1010;
    std::string s = "tab\t"s + u8"x" + 'c';
    for (const auto &[key, value] : table) {
        if constexpr (sizeof(key) < 4) std::cout << static_cast<int>(value) << '\n';
    }
    try { throw std::runtime_error("no"); } catch (...) { co_return; }
    auto p = std::make_unique<Point<int>>(1, 2);
    return x < y && p->*q > 1.5e3f ? 10_km : nullptr;
}
} // namespace geo::detail

bool operator""_yes(const char *text, std::size_t n);
int main() { return SQUARE(2); }
