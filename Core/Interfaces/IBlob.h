#pragma once

#include "Core/Interfaces/IRefCountable.h"

namespace Zelnor
{

/// A reference-counted block of opaque bytes, such as a codec's extra data. The libraries only keep and hand
/// back pointers to it; what is inside is between who makes it and who reads it.
class ZELNOR_API IBlob : public virtual IRefCountable
{
public:
    ~IBlob() override;
};

} // namespace Zelnor
