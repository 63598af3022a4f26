#pragma once

#include "Core/Interfaces/IBlob.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace Zelnor::Testing
{

/// A blob that tells how many there are.
class CountedBlob : public Counted<IBlob>
{
public:
    static boost::intrusive_ptr<CountedBlob> Create() { return new CountedBlob(); }
    static int GetAlive() { return s_alive; }

private:
    CountedBlob() { ++s_alive; }
    ~CountedBlob() override { --s_alive; }

    inline static int s_alive = 0;
};

} // namespace Zelnor::Testing
