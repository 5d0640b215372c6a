// A program that dies of a fault.
int main() { __builtin_trap(); }
