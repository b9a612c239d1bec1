// Carries the precompiled headers of all test programs; holds no test of its own.
