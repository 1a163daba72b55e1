a = b / c / d;
a = b /c/ d;
f(a)/g/h[0]/i
x = /re/g;
y = (/re/i);
z = [/a/, /b/];
return /re/.exec(s)
typeof /re/ === 'object'
s.split(/,\s*/)
a = b
/ c
ok && /re[/]x/.test(s) || /\//.test(s)
n++ / 2 / 1
k = { re: /x/y }
t = c ? /a/ : /b/
x = `${a}` / 2 / 3
/^start/.test(line)
/=not assignment/.test(line)
a /= 2
q = /[[a-z]--[aeiou]]/v
u = /unfinished
// comment /re/
