import type { Config, Rule as Law } from "./config";

/** Someone who signs in. */
export interface User<T = string> extends Base {
    readonly id: number;
    'display name'?: T;
    greet(other: User): string;
    onChange: (event: Event, point: Point) => void;
}
// Either
// or.
type Result<T> = { ok: true; value: T } | Failure;
/** Of paint. */
declare const enum Color { Red, Green = 1 << 2 }

//! Spaces
export namespace Shapes.Flat {
    export abstract class Box<T> implements Area {
        private size = 1;
        static count: number = 0;
        /** Makes a box. */
        constructor(private readonly width: number, public height?: number) { super(); }
        get area(): number { return this.width; }
        set area(value: number) {}
        abstract draw(context: Context, done: (error: Error | null) => void): void;
        static of<U>(items: U[]): Box<U> { const box: Box<U> = new Box(items); return box; }
        handler = (event: MouseEvent): void => { const target = event.target; };
    }
}
declare module "outside" {
    export function load(name: string): Promise<void>;
}
declare global { interface Window { extra: string } }

function over(a: string): void;
function over(a: number, { b, c }: Options = {}): void {
    const identity = async <T>(x: T): Promise<T> => x;
    let count: number;
    each(function (this: Options, item: string) { count++; });
}
const Mixin = class<T> extends Base<T> { mix(): void {} };
// FIXME half typed
class Half {
    field: string
    method(argument: number,
