// The window tests' precompiled headers are made while this file compiles; it holds no code.
