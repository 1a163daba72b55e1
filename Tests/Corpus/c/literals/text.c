x = 'a' + L'\0' + u'\u1234' + '\'' + '"';
s = "a\"b" "c\\" u8"d" U"e\U0001F600" "%d%%%5s%-*.*f%llu%n%q" "100%";
r = R"(a)" R"--(b)-)--" u8R"x(c
d)" )x";
t = "cont\
inued" "open
n = 0 + 00 + 1u + 2UL + 3LLu + 4wb + 0xABCuz + 0B11 + 1'2'3 + 0xF'F;
f = 1. + .1 + 1.0f + 1e5 + 1e-5L + 0x.8p0 + 0x1p+4f + 1.5F16 + 2.dd;
bad = 0b12 + 09a + 1_2 + '';
c = a.b + c->d.e(f) + g.5;
