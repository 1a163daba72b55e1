{ block: for (;;) {} }
x = { a: 1, b };
f({ c: 2 }, { d });
if (x) { e } else { f }
g = () => { h: while (1) {} };
i = () => ({ j: 1 });
return { k: 1 }
[{ l: 1 }, {}]
m ? { n: 1 } : { o: 2 }
switch (p) { case q: { r } case { s: 1 }.s: t }
({ u, ...v } = w);
y = {
    "z": {
        in: 1
    },
    [a]: b ? c : d,
    e() { return { f } }
}
{ g(function () { h( }) }
i
