#pragma once

#include "Core/Interfaces/IRefCountable.h"

namespace Zelnor
{

/// A reference-counted block of opaque bytes, such as a codec's extra data. The libraries only store pointers
/// to it and return them; its contents are a matter between the code that makes it and the code that reads
/// it.
class ZELNOR_API IBlob : public virtual IRefCountable
{
public:
    ~IBlob() override;
};

} // namespace Zelnor
