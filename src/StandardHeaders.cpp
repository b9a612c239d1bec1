// Carries the precompiled headers of the program; holds nothing else.
