let a = b ? c : d, e: number
let next = 1
const o = { type: 1, as: 2, m<T>(x: T): void {}, f: (x: number): string => "s" }
if (a < b && c > (d)) g(h as any, k as const, i! + 1);
type = 5; declare; abstract = type
let f: (x: number, y?: string) => void = () => {}
var v = x as { a: number } | null
const w = new Set<string>(), u = y as unknown as T[]
function g<T>(x: T): { a: T } { return { a: x } }
class C { a = 1
  b?: string
  in: () => void = () => { go() }
  async *gen(): AsyncGenerator<number> { yield 1 }
}
export default interface I {}
const s = `t${x as T}`, n: `a${B}` = "q", r = /a:b/g
label: for (;;) break label
let z: typeof import("x"), q: unique symbol
type F = new () => Abstract
function broken(a: string { b };
let after: number
