import a from "a"
import { b } from 'b'
import c, { d as e, default as f, "string name" as g } from "c";
import * as ns from "ns";
import from from "from";
import {
    h, // with a comment
    i,
} from "h"
import j from "j" with { type: "json" }
const lazy = await import("k");
export const one = 1;
export default function () {}
export function named() {}
export { one as uno, two }
export { three } from "three";
export * from "four"
export * as five from "five";
x = 1
