#include "Core/Interfaces/RefCountImpl.h"

#include <gtest/gtest.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <string>
#include <type_traits>
#include <utility>

namespace Zelnor
{

namespace
{

class INamed : public virtual IRefCountable
{
public:
    explicit INamed(std::string name) : m_name(std::move(name)) {}

    const std::string& GetName() const { return m_name; }

private:
    std::string m_name;
};

class Named final : public Counted<INamed>
{
public:
    Named(std::string name, int& destroyed) : Counted(std::move(name)), m_destroyed(destroyed) {}
    Named(const Named&) = default;

private:
    ~Named() override { ++m_destroyed; }

    int& m_destroyed;
};

static_assert(!std::is_abstract_v<Counted<INamed>> && std::is_base_of_v<INamed, Counted<INamed>>);

} // namespace

TEST(RefCountImpl, CountsFromZero)
{
    const RefCountImpl count;
    EXPECT_EQ(count.GetRefCountImpl(), 0);
    EXPECT_EQ(count.AddRefImpl(), 1);
    EXPECT_EQ(count.AddRefImpl(), 2);
    EXPECT_EQ(count.GetRefCountImpl(), 2);
    EXPECT_EQ(count.ReleaseImpl(), 1);
    EXPECT_EQ(count.ReleaseImpl(), 0);
    EXPECT_EQ(count.GetRefCountImpl(), 0);
}

TEST(RefCountImpl, ACopyStartsAfreshAndAssigningChangesNothing)
{
    RefCountImpl count;
    count.AddRefImpl();
    RefCountImpl copy(count);
    EXPECT_EQ(copy.GetRefCountImpl(), 0);
    copy.AddRefImpl();
    copy.AddRefImpl();
    count = copy;
    EXPECT_EQ(count.GetRefCountImpl(), 1);
}

TEST(RefCountImpl, TheLastReferenceDestroysTheObjectAndTheCountIsStillReturned)
{
    int destroyed = 0;
    const auto* const object = new Named("n", destroyed);
    const RefCountImpl count;
    count.AddRefImpl();
    count.AddRefImpl();
    EXPECT_EQ(count.ReleaseOrDestroyImpl(object), 1);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(count.ReleaseOrDestroyImpl(object), 0);
    EXPECT_EQ(destroyed, 1);
}

TEST(Counted, CountsReferencesAndDestroysWithTheLast)
{
    int destroyed = 0;
    const auto* const object = new Named("n", destroyed);
    EXPECT_EQ(object->GetRefCount(), 0);
    EXPECT_EQ(object->AddRef(), 1);
    EXPECT_EQ(object->AddRef(), 2);
    EXPECT_EQ(object->Release(), 1);
    EXPECT_EQ(object->GetRefCount(), 1);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(object->Release(), 0);
    EXPECT_EQ(destroyed, 1);
}

TEST(Counted, IsHeldThroughPointersToItsInterfaceAndToAnyOtherBase)
{
    int destroyed = 0;
    boost::intrusive_ptr<INamed> named(new Named("n", destroyed));
    boost::intrusive_ptr<const IRefCountable> counted = named;
    EXPECT_EQ(counted->GetRefCount(), 2);
    named = nullptr;
    EXPECT_EQ(destroyed, 0);
    counted = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(Counted, PassesTheInterfacesConstructorsOn)
{
    int destroyed = 0;
    const boost::intrusive_ptr<const INamed> named(new Named("given", destroyed));
    EXPECT_EQ(named->GetName(), "given");
}

TEST(Counted, ACopyIsAnObjectWithoutReferences)
{
    int destroyed = 0;
    const boost::intrusive_ptr<const Named> named(new Named("n", destroyed));
    const boost::intrusive_ptr<const Named> again = named;
    const boost::intrusive_ptr<const Named> copy(new Named(*named));
    EXPECT_EQ(named->GetRefCount(), 2);
    EXPECT_EQ(copy->GetRefCount(), 1);
    EXPECT_EQ(copy->GetName(), "n");
}

} // namespace Zelnor
