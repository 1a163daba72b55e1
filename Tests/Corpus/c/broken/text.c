int f(void) {
    g((1, 2;
    h[3;
}
int after(void) { return 1; }
int k = { 1, 2;
}
)
char *s = "open
int next;
'
#define X '
