// The host program that the mail server starts for every file: it loads the engine library from its
// own folder, calls the engine and ends with the verdict.
#include "Engine.h"

int main() { return quarda::RunEngine("quarda"); }
