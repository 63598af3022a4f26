#pragma once

/// Marks what a Zelnor library exports. The libraries are built with hidden visibility, so whatever does not
/// carry this mark stays inside its library. The mark is the same for who builds and who uses a library.
#define ZELNOR_API __attribute__((visibility("default")))

/// Takes a class nested in an exported one out of the export again.
#define ZELNOR_LOCAL __attribute__((visibility("hidden")))
