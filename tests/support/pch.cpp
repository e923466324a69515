// Holds the precompiled headers of the tests.
