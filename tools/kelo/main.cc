#include <cstdio>
int main() { std::puts("kelo"); return 0; }
