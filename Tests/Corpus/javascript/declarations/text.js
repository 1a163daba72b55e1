/** Documents the first. */
let one = 1, two = f(1, 2), three;
var left = [1, 2], // why
    right = {x: 1, y: 2},

    /* apart */ last
const {a, b: c} = d, [e] = g
for (let i = 0, n = list.length; i < n; i++) {}
for (var key in first, second) {}
if (one) { let inner = 1, other = 2 }
const text = "a, b", pattern = /x,y/g.test(text), half = one / 2
let sum = one +
    two, all = (p, q) =>
    p > q
sum = 1, two = 2
function outer() {
    var self = this, copy = `x ${self}`
    return self, copy
}
let alone = [1, 2]
var call = function (r, s) {}, lost = 1
var object = {
    x: 1
}, lost = 2

let quick, brown // both
foo() /* none */
let fox /* one */ = 1, dog /* two
lines */, end

try {} catch (error) {}
try {} catch({message, cause: [why]}) {}
promise.catch(handler)
var unfinished,
