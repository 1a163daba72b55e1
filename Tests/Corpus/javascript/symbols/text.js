#!/usr/bin/env node
// ! Imports
import fs, { join as path } from "node:path";
import * as all from './all.js';

/** The most that is kept. */
export const LIMIT = 100, other = 1;
let [first, { deep: second = 2 }] = pair;

/**
 * Keeps values.
 *
 * @param {number} size
 */
export default function makeCache(size, { ttl = 0, ...rest } = {}) {
    const store = new Map();
    // Looks a key up,
    // or answers nothing.
    function get(key) {
        for (const [name, value] of store)
            if (name === key)
                return value;
    }
    const isOld = ({ age }) => age > ttl;
    watch(store, function (event) {
        prune(event, isOld);
    });
    function prune() {}
    return { get, set(key, value) { store.set(key, value); }, clear: () => store.clear() };
}

/* ! Classes */
/** What is drawn. */
@sealed
class Shape extends Base {
    static #count = 0;
    'quoted' = (x) => x;
    static { let start = now(); }
    /** Makes one. */
    constructor(name, ...rest) { super(name); }
    get area() { return 0; }
    set area(value) { this.value = value; }
    static create() { return new this(); }
    async *[Symbol.asyncIterator]() {}
    draw(context) {
        const Inner = class { paint() {} };
        class Local extends Inner {}
    }
}
exports.run = async function* (list) { yield list; };
exports.stop = event => event.stop();
// TODO what is half typed
function half(a, b) {
    class Open {
        method(x
