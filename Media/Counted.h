#pragma once

#include "Core/Interfaces/RefCountImpl.h"

namespace Zelnor::Media
{

/// Reference counting for a class of the tool that implements `Interface`.
template <class Interface>
class Counted : public Interface
{
public:
    int AddRef() const final { return m_references.AddRefImpl(); }
    int GetRefCount() const final { return m_references.GetRefCountImpl(); }
    int Release() const final
    {
        const int count = m_references.ReleaseImpl();
        if (count == 0)
        {
            delete this;
        }
        return count;
    }

private:
    RefCountImpl m_references;
};

} // namespace Zelnor::Media
