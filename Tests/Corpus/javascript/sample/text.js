#!/usr/bin/env node
"use strict";
/**
 * Adds two numbers.
 * @param {number} a the first, see {@link other} or mail a@b.c
 * @returns {number} TODO: say more
 */
import fs, { readFile as read, default as whole } from "node:fs";
import * as path from 'node:path';
import data from "./data.json" with { type: "json" };
import "side-effect"
export { read, whole as default };
export * as everything from "./all.js";
export default class Shape extends mixin(Base, { deep: true }) {
    static #count = 0;
    #name = "shape";
    size
    "quoted name" = 1;
    [computed + 1] = () => this.#name;
    static {
        Shape.#count += 1;
    }
    constructor(name, { width = 1, height: h = 2 } = {}, ...rest) {
        super(name);
        this.#name = name ?? 'none';
    }
    get area() { return this.width * this.height; }
    set area(value) { throw new RangeError(`no area ${value}`); }
    static async *walk(list) { for await (const item of list) yield* item; }
    async load() { await read(this.path); }
    [Symbol.iterator]() { return null; }
    #hidden() {}
    'string name'() {}
    @logged("x") method() { return #name in this; }
}
function plain(a, b = a + 1, [c, , d], { e, f: { g } }) {
    if (a === b || !c && d !== null) { return a ? b : c; }
    else if (a instanceof Shape) return;
    outer: for (let i = 0, n = 10; i < n; i++) {
        while (true) { if (i % 2) continue outer; break outer; }
    }
    do { a--; } while (a > 0)
    switch (a) {
        case 1: { b **= 2; break; }
        case "two": case b: return typeof c;
        default: debugger
    }
    try { void 0; } catch ({ message }) { delete a.b; } finally { with (Math) sin(1) }
}
async function* generate() { yield 1; }
const arrow = async (x, y = 2) => ({ x, y }), single = z => z << 2 >>> 1;
var bound = function () { return this; };
let { first, second: [third = 3], ...others } = source, [one, , two] = pair;
const numbers = [0, 1.5, .5, 1e3, 2E-7, 0xFF, 0b1010, 0o17, 1_000_000, 123n, 0xFFn, 1., 08x];
const strings = ["plain", 'single', "esc \n \x41 \u0041 \u{1F600} \0 \q", 'it\'s', "line \
continued", "bad \u00"];
const object = {
    key: 1, 'quoted': 2, "also quoted": 3, 4: 5, [computed()]: 6, short, ...spread,
    ternary: a ? b : c, method() { return 1; }, get prop() { return 2; }, set prop(v) {},
    async *gen() {}, arrow: (p) => { return p; }, fn: function named() {}, nested: { if: 1, class: 2 },
};
const text = `a ${b + `nested ${c}`} \` \u{41} $ {no}
second line ${ { d: 1 }.d }`;
const value = object?.key?.[0]?.(1) ?? DEFAULT_VALUE;
x ||= 1; y &&= 2; z ??= 3; w >>>= 4; v = ~u ^ t & s | r; u <= t; s >= r; q != p; o == n; l!==m;
const pattern = /^[a-z\d\]/_-]+(?<year>\d{4})-\k<year>|(?:x|y)*?\p{L}{2,}(?=z)(?<!w)\/$/giu;
const half = total / 2 / count, quarter = (a + b) / 4, item = list[0] / 2;
if (/ab+c/.test(text)) text.replace(/[/]/g, "");
const call = new Map([[NaN, undefined]]).get(Infinity), me = globalThis.self;
label.of.in.new.if = import.meta.url; const late = import("./late.js");
const page = html`<p class="a">${ value }</p>`, look = /* css */ `.a { color: ${ red }; }`;
// FIXME: a task, and a plain comment behind it
/* one line */ /* two
   lines, HACK */
