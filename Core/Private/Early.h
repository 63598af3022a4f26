#pragma once

// Private to the libraries, not installed.

/// Makes an object before those of a program that has the libraries as archives: its own static objects may
/// read ours. What is in one source is made in its order. A shared library makes all its objects before the
/// program does.
#define ZELNOR_EARLY __attribute__((init_priority(1000)))
