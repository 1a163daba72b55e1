// ! templates
#include <vector>

namespace shapes {

/// What has an area.
class Shape {
public:
    Shape() = default;
    virtual ~Shape();
    /** In square units. */
    virtual double area() const = 0;

protected:
    int _sides = 0;
};

template <typename T>
concept Small = sizeof(T) <= 8;

template <Small T> struct Box final : Shape {
    explicit Box(T side) : _side(side) {}
    double area() const override { return _side * _side; }
    bool operator==(const Box &other) const { return _side == other._side; }
    using Value = T;

private:
    T _side;
};

enum class Color : char { Red, Green };

} // namespace shapes

double shapes::Shape::perimeter(int scale) const {
    auto twice = [scale](int value) { return value * scale; };
    return twice(_sides);
}

int main() {
    std::vector<int> numbers{1, 2};
    return static_cast<int>(numbers.size());
}

int locals(std::vector<int> &input) {
    std::map<int, int> counts;
    const auto &first = input.front();
    Shape shape{1};
    int *raw = new int;
    size_t value;
    value = first *value;
    std::cin >> value;
    for (auto &each : input)
        if (auto found = counts.find(each); found != counts.end()) throw value;
    delete raw;
    return value;
}
