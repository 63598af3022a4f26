#pragma once

/// Marks what a Zelnor library exports. The libraries are built with hidden visibility, so whatever is not
/// marked stays inside its library. The mark is the same when a library is built and when it is used.
#define ZELNOR_API __attribute__((visibility("default")))

/// Excludes a class that is nested in an exported one from the export.
#define ZELNOR_LOCAL __attribute__((visibility("hidden")))
