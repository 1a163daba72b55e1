class A {}
class B extends A { static x = 1; static y; static static; get; set; async; get get() {} set set(v) {} async async() {} }
const C = class extends (a ? B : A) { };
const D = class Named { };
class E {
    field = {
        a: 1
    }
    other = call(
        1, 2)
    #p = x =>
        x * 2
    static { this.q = 1; }
    static *[Symbol.iterator]() {}
    async *#g() {}
    static async s() {}
    constructor() { super(); new.target; }
    if() {} delete() {} static() {} get() {} 0() {} 1.5() {}
    accessor z = 1;
}
