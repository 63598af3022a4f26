#include "Media/Verifying/Verification.h"

#include "Core/Private/AttachTag.h"

namespace Zelnor::Media
{

VerificationFailed::~VerificationFailed() noexcept = default;

namespace details
{

ZELNOR_ATTACH_TAG(VerificationFailed::TagDifferences)
ZELNOR_ATTACH_TAG(VerificationFailed::TagKeptFile)

} // namespace details

std::string TargetDifference::Sentence() const
{
    const std::string where = place.TextInDocument();
    return (where.empty() ? "" : where + ": ") + what + ": wanted " + wanted + ", found " + found;
}

} // namespace Zelnor::Media
