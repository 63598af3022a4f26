#include "Media/Pages/TargetTables.h"

#include "Tests/Support/Html.h"
#include "Tests/Support/JobFixtures.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// The keys that the table of a target compares, those of a source without a container or tags of its own.
TEST(TargetTables, CompareOnlyWhatTheSourceHas)
{
    MediaFile source = MakeMediaFile({MakeAudioStream()});
    Core::Property record = source.descriptor->GetProperty();
    record.RemoveChild(Conf::IFormatFile::TAG_CONTAINER);
    source.descriptor->SetProperty(record);
    Transcode transcode = MakeTranscode(source, AudioRecord(R"("codec_id":"CODEC_ID_AAC")"), "mp4");
    transcode.place.node = 2;
    transcode.target = RecordOf(R"({"target":{"container":"mp4"}})");
    EXPECT_THAT(
        TargetTablesHtml({transcode}),
        testing::HasSubstr("container</th><td>\xE2\x80\x93</td><td>&quot;mp4&quot;</td><td>set</td>"));
}

} // namespace
