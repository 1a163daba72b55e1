match = case = type = 1
match.group(1)
if match(x): print(case, type(x))
match (x, y):
    case -1: pass
s = "it's # no" + 'say "hi"' # a comment's end
t = "don't" 'x' "y's" # "quoted"
empty = "" + '' + """""" + f''
u = rb'\'' + R"\"" + "\N{BULLET}\u00e9 tail" + '\q{0}%d%%'
v = f"{d["k"]:{w}.{p}f} {x:=^10} {y if z else {1: 2}[1]!s}"
w = fr'\d{n}\{m}' + t"{a}" + Rb"\x"
long = f"""a {
    b
} "c" {{d}}
"""
n = 1.real + 1..imag + 0_0 + 1e5j + 0777 + 12ab + x.y . z
def one(): return 1
def outer(a, b):
    # a comment
# further out
    def inner(
        c={"d": (1, 2)},
    ) -> "x: y":
        r"""Inner's text \n.
unindented
        """

        return c
    return inner
class Empty: x = 1
class Point(Base):
    x: int; y = 2
    if True:
        else_ = 3
    else: y = 4
    async  def  go(self): ...
    def __init__(self): self.x = lambda: {0}
after = call(1,
             b=[2,
def recovered():
    x = "open
    return x
print(x);) é = naïve(1) if a<b>c else not_in
a = b if x else"s"
value = {
    **other, "k": """
    text
    """,
}
