/* ! declarations */
#define SQUARE(x) ((x) * (x))

/**
 * A point on the plane.
 */
struct point {
    int x, y;
    struct {
        double weight;
    } extra;
};

union value {
    long number;
    char *text;
};

enum shape { CIRCLE, SQUARE_SHAPE = 4 };

typedef struct point point_t;
typedef int (*compare_fn)(const void *, const void *);

// Counts calls.
static unsigned calls;

int compare(const void *, const void *);

/// Adds two numbers.
/// Never fails.
static inline int add(int first, int second)
{
    int sum = first + second;
    for (int index = 0; index < 2; ++index)
        sum += index;
    return sum;
}

int main(int argc, char **argv) {
    point_t origin = {0, 0};
    // TODO: read the arguments
    return add(origin.x, argc);
}

int locals(int count) {
    char *name = 0, *other;
    const char *text;
    struct point *where = find(count);
    unsigned long size;
    size = count *size;
    if (count) goto out; else size = 1;
    for (size_t at = 0; at < size; at++) use(sizeof size);
out:
    return size;
}
