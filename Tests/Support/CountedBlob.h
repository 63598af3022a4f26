#pragma once

#include "Core/Interfaces/IBlob.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace Zelnor::Testing
{

/// A blob that tells how many there are.
class CountedBlob : public IBlob
{
public:
    static boost::intrusive_ptr<CountedBlob> Create() { return new CountedBlob(); }
    static int GetAlive() { return s_alive; }

    int AddRef() const override { return m_references.AddRefImpl(); }
    int GetRefCount() const override { return m_references.GetRefCountImpl(); }
    int Release() const override
    {
        const int count = m_references.ReleaseImpl();
        if (count == 0)
        {
            delete this;
        }
        return count;
    }

private:
    CountedBlob() { ++s_alive; }
    ~CountedBlob() override { --s_alive; }

    inline static int s_alive = 0;
    RefCountImpl m_references;
};

} // namespace Zelnor::Testing
