/** Documents the first. */
let one: number = 1, two: Map<string, number> = new Map(), three!: string;
const left: [number, string] = [1, "2"], // why
    right = <T>(item: T, other) => item
let { a, b }: P = c, d: Q
for (let i = 0, n: number = 1; i < n; i++) {}
declare const first: number, second: string
declare const only: Map<string, number>
declare const list: A<B, C<D>>, cast = list as Map<K, V>
try {} catch (error: unknown) {}
try {} catch (plain) {}
