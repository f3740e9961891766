// The built files of the page as read-only data; the assembler is told their folder.
#define EMBED(label, file)      \
    .globl label;               \
    .globl label##End;          \
    label: .incbin file; \
    label##End: .byte 0

    .section .rodata
    EMBED(tamarinIndexHtml, "index.html")
    EMBED(tamarinPageJs, "page.js")
    EMBED(tamarinPageCss, "page.css")
    EMBED(tamarinIconSvg, "icon.svg")
    .section .note.GNU-stack, "", @progbits
