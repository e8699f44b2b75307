// The program of the target test_framework, which is there for its precompiled header.
int main() {}
