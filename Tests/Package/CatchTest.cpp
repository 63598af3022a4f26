#include "Tests/Package/Thrower.h"

#include "Conf/Interfaces/ConfException.h"
#ifdef ZELNOR_WITH_MEDIA
#include "Media/Pages/Graphviz.h"
#include "Media/Verifying/Verification.h"
#endif

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace Zelnor::Testing
{

namespace
{

template <class Handled>
bool IsCaughtAs(const std::string& thrown)
{
    try
    {
        ThrowByName(thrown);
    }
    catch (const Handled&)
    {
        return true;
    }
    catch (...)
    {
        return false;
    }
}

/// Which handlers, of all there are, catch an object of the class `thrown`.
std::set<std::string> HandlersOf(const std::string& thrown)
{
    static const std::map<std::string, bool (*)(const std::string&)> handlers = {
        {"std::exception", IsCaughtAs<std::exception>},
        {"boost::exception", IsCaughtAs<boost::exception>},
        {"Exception", IsCaughtAs<Exception>},
        {"CoreException", IsCaughtAs<Core::CoreException>},
        {"PropertyException", IsCaughtAs<Core::PropertyException>},
        {"MethodIsNotApplicable", IsCaughtAs<Core::MethodIsNotApplicable>},
        {"ConfException", IsCaughtAs<Conf::ConfException>},
        {"FormatException", IsCaughtAs<Conf::FormatException>},
        {"PresetException", IsCaughtAs<Conf::PresetException>},
        {"HelperException", IsCaughtAs<Conf::HelperException>},
        {"ConstraintException", IsCaughtAs<Conf::ConstraintException>},
        {"ConstraintIsNotApplicableForTypeException",
         IsCaughtAs<Conf::ConstraintIsNotApplicableForTypeException>},
        {"CheckedPropertyHasDifferentTypeException",
         IsCaughtAs<Conf::CheckedPropertyHasDifferentTypeException>},
        {"ProfileException", IsCaughtAs<Conf::ProfileException>},
        {"LinkExists", IsCaughtAs<Conf::LinkExists>},
        {"LinkNotFound", IsCaughtAs<Conf::LinkNotFound>},
        {"NodeNotFound", IsCaughtAs<Conf::NodeNotFound>},
        {"BadJson", IsCaughtAs<Conf::BadJson>},
#ifdef ZELNOR_WITH_MEDIA
        {"MediaException", IsCaughtAs<Media::MediaException>},
        {"ProbeException", IsCaughtAs<Media::ProbeException>},
        {"PresetFileException", IsCaughtAs<Media::PresetFileException>},
        {"PlanException", IsCaughtAs<Media::PlanException>},
        {"JobException", IsCaughtAs<Media::JobException>},
        {"DrawingException", IsCaughtAs<Media::DrawingException>},
        {"RunException", IsCaughtAs<Media::RunException>},
        {"TranscodeFailed", IsCaughtAs<Media::TranscodeFailed>},
        {"VerificationFailed", IsCaughtAs<Media::VerificationFailed>},
#endif
    };
    std::set<std::string> catching;
    for (const auto& [name, catches] : handlers)
    {
        if (catches(thrown))
        {
            catching.insert(name);
        }
    }
    return catching;
}

/// The class and everything it derives from, written down here once more: derived from the headers it would
/// follow their mistakes.
std::set<std::string> Ancestry(const std::string& name)
{
    static const std::map<std::string, std::string> bases = {
        {"CoreException", "Exception"},
        {"PropertyException", "CoreException"},
        {"MethodIsNotApplicable", "PropertyException"},
        {"ConfException", "Exception"},
        {"FormatException", "ConfException"},
        {"PresetException", "ConfException"},
        {"HelperException", "ConfException"},
        {"ConstraintException", "ConfException"},
        {"ConstraintIsNotApplicableForTypeException", "ConstraintException"},
        {"CheckedPropertyHasDifferentTypeException", "ConstraintException"},
        {"ProfileException", "ConfException"},
        {"LinkExists", "ProfileException"},
        {"LinkNotFound", "ProfileException"},
        {"NodeNotFound", "ProfileException"},
        {"BadJson", "ProfileException"},
        {"MediaException", "Exception"},
        {"ProbeException", "MediaException"},
        {"PresetFileException", "MediaException"},
        {"PlanException", "MediaException"},
        {"JobException", "MediaException"},
        {"DrawingException", "MediaException"},
        {"RunException", "MediaException"},
        {"TranscodeFailed", "RunException"},
        {"VerificationFailed", "RunException"},
    };
    std::set<std::string> ancestry = {"std::exception", "boost::exception", name};
    for (auto base = bases.find(name); base != bases.end(); base = bases.find(base->second))
    {
        ancestry.insert(base->second);
    }
    return ancestry;
}

TEST(ExceptionFromAnotherSharedObject, IsCaughtByItsClassAndEachBaseAndNothingElse)
{
#ifdef ZELNOR_WITH_MEDIA
    ASSERT_EQ(GetExceptionClasses().size(), 25U);
#else
    ASSERT_EQ(GetExceptionClasses().size(), 16U);
#endif
    for (const std::string& thrown : GetExceptionClasses())
    {
        EXPECT_EQ(HandlersOf(thrown), Ancestry(thrown)) << thrown;
    }
}

TEST(ExceptionFromAnotherSharedObject, BringsItsTags)
{
    for (const std::string& thrown : GetExceptionClasses())
    {
        try
        {
            ThrowByName(thrown);
        }
        catch (const boost::exception& e)
        {
            const std::string* const description = boost::get_error_info<TagDescription>(e);
            ASSERT_NE(description, nullptr) << thrown;
            EXPECT_EQ(*description, "from another shared object");
            const std::string* const callStack = boost::get_error_info<TagCallStack>(e);
            ASSERT_NE(callStack, nullptr) << thrown;
            EXPECT_THAT(*callStack, ::testing::HasSubstr("ThrowByName"));
            const char* const* const file = boost::get_error_info<boost::throw_file>(e);
            ASSERT_NE(file, nullptr) << thrown;
            EXPECT_STREQ(*file, "Tests/Package/Thrower");
        }
    }
}

TEST(ExceptionFromAnotherSharedObject, CanBeKeptAndThrownAgain)
{
    for (const std::string& thrown : GetExceptionClasses())
    {
        boost::exception_ptr kept;
        try
        {
            ThrowByName(thrown);
        }
        catch (...)
        {
            kept = boost::current_exception();
        }
        try
        {
            boost::rethrow_exception(kept);
        }
        catch (const Exception& e)
        {
            EXPECT_NE(boost::get_error_info<TagDescription>(e), nullptr) << thrown;
        }
    }
}

} // namespace

} // namespace Zelnor::Testing
