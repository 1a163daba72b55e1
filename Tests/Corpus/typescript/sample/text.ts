#!/usr/bin/env -S deno run
// A sample of everything.
import type { Foo, type Bar as B } from "./foo";
import fs = require("fs");
export type { Foo };

/** A shape. */
interface Shape<T = string> extends Base<T>, Other {
    readonly kind: "circle" | `a-${T}`;
    size?: number;
    area(scale: number): number;
    [key: string]: unknown;
    new (x: T): Shape<T>;
}

type Keys<T> = { readonly [K in keyof T as `get${K}`]-?: () => T[K] };
export type Maybe<T extends object> =
    | T
    | (T extends (infer U)[] ? U : never);

const enum Color { Red = 1, Green = Red << 1, Blue }

declare module "x" {
    function over(a: string): void;
    function over(a: number, ...rest: any[]): asserts a is 5;
}

@Component({ selector: "app" })
export abstract class Box<in out T> extends Map<string, T[]> implements Shape<T>, A.B {
    private static count: number = 0;
    #secret?: Array<Map<string, number>>;
    declare ready: boolean;

    constructor(public readonly name: string, @Inject() private x = 1) {
        super();
    }
    abstract run(): Promise<void>;
    get value(): T | undefined { return this.get("a")!; }
    protected async load<K extends keyof T>(key: K, opt?: { deep: boolean }): Promise<T[K]> {
        const items: [a: string, b?: number][] = [];
        let done!: boolean;
        for (const x of items as Item[]) { use(x); }
        return (await fetch<T>(`u/${key as string}`)) satisfies T;
    }
}

const add = (a: number, b = 2): number => a + b;
const id = async <T,>(x: T) => x;
function isString(this: Window, x: unknown): x is string { return typeof x === "string"; }
export const { a, b }: { a: number } = f(x => x < 1 && y > 2);
namespace N.M { export let z = 1; }
