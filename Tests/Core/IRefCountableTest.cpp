#include "Core/Interfaces/IRefCountable.h"

#include "Core/Interfaces/IBlob.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <gtest/gtest.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <type_traits>

namespace Zelnor
{

namespace
{

class Blob final : public Counted<IBlob>
{
public:
    static boost::intrusive_ptr<Blob> Create(bool& destroyed) { return new Blob(destroyed); }

private:
    explicit Blob(bool& destroyed) : m_destroyed(destroyed) {}
    ~Blob() override { m_destroyed = true; }

    bool& m_destroyed;
};

static_assert(std::is_abstract_v<IRefCountable> && std::has_virtual_destructor_v<IRefCountable>);
static_assert(std::is_same_v<decltype(&IRefCountable::Release), int (IRefCountable::*)() const>);

} // namespace

TEST(IRefCountable, CreatedObjectHasOneReference)
{
    bool destroyed = false;
    const auto blob = Blob::Create(destroyed);
    EXPECT_EQ(blob->GetRefCount(), 1);
}

TEST(IRefCountable, PointersToAnyBaseShareOneCount)
{
    bool destroyed = false;
    auto blob = Blob::Create(destroyed);
    boost::intrusive_ptr<const IRefCountable> counted(blob);
    const boost::intrusive_ptr<IBlob> base(blob);
    EXPECT_EQ(blob->GetRefCount(), 3);
    counted.reset();
    EXPECT_EQ(base->GetRefCount(), 2);
    blob.reset();
    EXPECT_FALSE(destroyed);
}

TEST(IRefCountable, TheLastReleaseDestroys)
{
    bool destroyed = false;
    IRefCountable* const object = Blob::Create(destroyed).detach();
    EXPECT_EQ(object->AddRef(), 2);
    EXPECT_EQ(object->Release(), 1);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(object->Release(), 0);
    EXPECT_TRUE(destroyed);
}

} // namespace Zelnor
