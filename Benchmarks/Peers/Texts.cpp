// What a thousand exported texts cost when they are loaded: the share of our libraries' loading that their
// interface asks for. A library of its own.

#include "Core/Interfaces/Export.h"

#include <string>

#define ZELNOR_TEN(row, prefix)                                                                              \
    row(prefix##0) row(prefix##1) row(prefix##2) row(prefix##3) row(prefix##4) row(prefix##5) row(prefix##6) \
        row(prefix##7) row(prefix##8) row(prefix##9)
#define ZELNOR_TENS(row, prefix)                                                                             \
    ZELNOR_TEN(row, prefix##0)                                                                               \
    ZELNOR_TEN(row, prefix##1)                                                                               \
    ZELNOR_TEN(row, prefix##2)                                                                               \
    ZELNOR_TEN(row, prefix##3)                                                                               \
    ZELNOR_TEN(row, prefix##4)                                                                               \
    ZELNOR_TEN(row, prefix##5)                                                                               \
    ZELNOR_TEN(row, prefix##6)                                                                               \
    ZELNOR_TEN(row, prefix##7) ZELNOR_TEN(row, prefix##8) ZELNOR_TEN(row, prefix##9)

namespace Zelnor::Benchmarks
{

#define ZELNOR_TEXT(name)                                                                                    \
    extern ZELNOR_API const std::string name;                                                                \
    const std::string name(#name);
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_0)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_1)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_2)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_3)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_4)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_5)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_6)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_7)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_8)
ZELNOR_TENS(ZELNOR_TEXT, TAG_NUMBER_9)

} // namespace Zelnor::Benchmarks
