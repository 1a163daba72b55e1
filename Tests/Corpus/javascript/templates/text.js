`plain`
`${a}${b}`
`deep ${ `deeper ${ f({ k: `deepest` }) } ` } end`
tag`raw \unicode ${x}`
`brace } in text ${ {a: {b: 1}} } $ { }`
`lines
  ${a
    + b}
`
css`.a { width: ${w}px; ${mixin} }`
html`<a href="${url}" class=${c}>${text}</a>`
