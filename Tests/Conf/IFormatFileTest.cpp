#include "Conf/Interfaces/IFormatFile.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;

template <class Base, class Derived, class = void>
constexpr bool CastsDown = false;
template <class Base, class Derived>
constexpr bool CastsDown<Base, Derived, std::void_t<decltype(static_cast<Derived*>(std::declval<Base*>()))>> =
    true;
static_assert(std::is_base_of_v<IFormat, IFormatFile> && !CastsDown<IFormat, IFormatFile>,
              "callers cast a file with dynamic_cast");

static_assert(IFormatFile::DISK_SIZE_DVD_MINI == 1'400'000'000);
static_assert(IFormatFile::DISK_SIZE_DVD_STANDARD == 4'700'000'000);
static_assert(IFormatFile::DISK_SIZE_DVD_DOUBLE_LAYER == 8'500'000'000);
static_assert(std::is_same_v<decltype(IFormatFile::DISK_SIZE_DVD_MINI), const std::int64_t>);

static_assert(IFormatFile::MEDIA_ALL == 0 && IFormatFile::MEDIA_VIDEO == 1 && IFormatFile::MEDIA_AUDIO == 2 &&
              IFormatFile::MEDIA_SUBTITLES == 3 && IFormatFile::MEDIA_IMAGES == 4);
static_assert(std::is_same_v<std::underlying_type_t<IFormatFile::MediaType>, std::int32_t>);

class ChapterList : public Counted<IFormatChapterList>
{};

TEST(IFormatFile, AFreshRecordIsAGroupWithNothingButEmptyMetadata)
{
    const auto file = IFormatFile::Create();
    Property expected("format_file");
    expected.SetChild("metadata");
    EXPECT_EQ(file->GetProperty(), expected);
    EXPECT_EQ(file->GetProperty().GetType(), PROPERTY_TYPE_GROUP);
}

TEST(IFormatFile, FreshInternalPropertiesAreTheObjectNameAlone)
{
    const auto file = IFormatFile::Create();
    ASSERT_EQ(file->GetInternalProperties().size(), 1u);
    EXPECT_EQ(file->GetInternalProperties().front().first, "object_name");
    EXPECT_EQ(file->GetInternalProperties().front().second.data(), "format_file");
}

TEST(IFormatFile, ReferencesAreCounted)
{
    const auto file = IFormatFile::Create();
    EXPECT_EQ(file->GetRefCount(), 1);
    EXPECT_EQ(file->AddRef(), 2);
    EXPECT_EQ(file->Release(), 1);
    boost::intrusive_ptr<const IFormat> asFormat = file;
    EXPECT_EQ(file->GetRefCount(), 2);
    asFormat.reset();
    EXPECT_EQ(file->GetRefCount(), 1);
}

TEST(IFormatFile, TheLastReleaseDeletesTheFile)
{
    static int destroyed = 0;
    class Mortal : public IFormatFile
    {
    public:
        Mortal() : IFormat(TAG_FORMAT_FILE) {}
        ~Mortal() override { ++destroyed; }
    };
    boost::intrusive_ptr<IFormat> file = new Mortal();
    EXPECT_EQ(destroyed, 0);
    file.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(IFormatFile, ACloneIsEqualAndSharesNothing)
{
    const auto file = IFormatFile::Create();
    file->GetInternalProperties().put("runtime", "yes");
    const auto held = file;
    const auto clone = file->Clone();
    EXPECT_EQ(clone->GetRefCount(), 1);
    EXPECT_TRUE(clone->Compare(file));
    EXPECT_EQ(clone->GetInternalProperties(), file->GetInternalProperties());

    Property metadata("metadata");
    metadata.SetChildT("title", std::string("A film"));
    clone->SetMetadata(metadata);
    clone->GetInternalProperties().put("runtime", "no");
    EXPECT_EQ(file->GetMetadata().Count(), 0u);
    EXPECT_EQ(file->GetInternalProperties().get<std::string>("runtime"), "yes");
    EXPECT_FALSE(clone->Compare(file));
}

TEST(IFormatFile, ACloneTakesTheRecordsNameToo)
{
    const auto file = IFormatFile::Create();
    file->SetProperty(Property("renamed"));
    EXPECT_EQ(file->Clone()->GetProperty().GetName(), "renamed");
}

/// Copies as the author of a derived class may: the virtual base is his to initialise, and he forgot it.
class Movie : public IFormatFile
{
public:
    Movie() : IFormat("movie") {}
    Movie(const Movie& other) : IFormat("x"), IFormatFile(other) {}
};

/// Another way to the one base.
class Titled : public virtual IFormat
{
public:
    Titled() : IFormat("titled") {}
};

class TitledFile : public Titled, public IFormatFile
{
public:
    TitledFile() : IFormat("titled file") {}
    TitledFile(const TitledFile& other) : IFormat("x"), Titled(), IFormatFile(other) {}
    int AddRef() const override { return IFormatFile::AddRef(); }
    int GetRefCount() const override { return IFormatFile::GetRefCount(); }
    int Release() const override { return IFormatFile::Release(); }
};

template <class File>
void ExpectCopiedWhole()
{
    const boost::intrusive_ptr<File> file = new File();
    Property metadata("metadata");
    metadata.SetChildT("title", std::string("A film"));
    file->SetMetadata(metadata);
    file->GetInternalProperties().put("runtime", "yes");
    const boost::intrusive_ptr<File> copy = new File(*file);
    EXPECT_EQ(copy->GetProperty(), file->GetProperty());
    EXPECT_EQ(copy->GetInternalProperties(), file->GetInternalProperties());
    EXPECT_EQ(copy->GetRefCount(), 1);
    copy->SetMetadata(Property("metadata"));
    EXPECT_EQ(file->GetMetadata(), metadata);
}

TEST(IFormatFile, ACopyIsWholeAlsoWhereADerivedClassInitialisesTheBaseOtherwise)
{
    ExpectCopiedWhole<Movie>();
}

TEST(IFormatFile, ACopyIsWholeAlsoInADiamond) { ExpectCopiedWhole<TitledFile>(); }

TEST(IFormatFile, ACopyCountsItsOwnReferences)
{
    const auto file = IFormatFile::Create();
    const IFormatFile copy(*file);
    EXPECT_EQ(copy.GetRefCount(), 0);
    EXPECT_EQ(copy.GetProperty(), file->GetProperty());
}

TEST(IFormatFile, ChaptersAreNotKept)
{
    const auto file = IFormatFile::Create();
    const boost::intrusive_ptr<IFormatChapterList> chapters = new ChapterList();
    file->SetChapters(chapters);
    EXPECT_EQ(file->GetChapters(), nullptr);
    EXPECT_EQ(chapters->GetRefCount(), 1);
}

} // namespace
} // namespace Zelnor::Conf
