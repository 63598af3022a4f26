#pragma once

#include <rapidjson/fwd.h>

/// \file
/// RapidJSON's documents for the headers that speak of them. Clang 19 and later do not compile the documents
/// of RapidJSON 1.1, which assign to a constant member. There, only the names are declared: include a version
/// that is mended,
/// `<rapidjson/document.h>`, where documents are made.

#if !defined(__clang__) || __clang_major__ < 19
#include <rapidjson/document.h>
#endif
