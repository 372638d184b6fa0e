// Nothing but the program that the tests take their precompiled header from.
int main() { return 0; }
