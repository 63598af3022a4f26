#pragma once

#include "Media/Verifying/StreamComparison.h"
#include "Tests/Support/MediaFixtures.h"

#include <string>
#include <utility>
#include <vector>

/// \file
/// What finished files must be and are, made by hand.

namespace Zelnor::Testing
{

/// A stream that must be what its source, the first stream of `file`, is.
inline Media::ExpectedStream Expecting(const Media::MediaFile& file)
{
    const Media::MediaStream& source = file.streams.front();
    Media::ExpectedStream wanted;
    wanted.place.link = std::pair(3, 2);
    wanted.place.streamKind = Media::NameOf(source.kind);
    wanted.place.stream = 0;
    wanted.kind = source.kind;
    wanted.codec = source.codec;
    wanted.record = source.descriptor->GetProperty();
    wanted.streams = {0};
    return wanted;
}

/// A file that must hold that stream.
inline Media::ExpectedFile ExpectingFile(const Media::MediaFile& file, const std::string& container)
{
    Media::ExpectedFile wanted;
    wanted.place.node = 2;
    wanted.container = container;
    wanted.sources = {file};
    wanted.streams = {Expecting(file)};
    return wanted;
}

/// A stream of 250 packets in ten seconds that could be decoded.
inline Media::StreamScan GoodScan()
{
    Media::StreamScan scan;
    scan.begin = 0;
    scan.end = 10000000;
    scan.packets = 250;
    scan.bytes = 250000;
    scan.frameLength = 40000;
    scan.frames = 250;
    return scan;
}

/// "size: wanted 1280x720, found 640x360" for each difference, without its place.
inline std::vector<std::string> Told(const std::vector<Media::TargetDifference>& differences)
{
    std::vector<std::string> told;
    for (const Media::TargetDifference& difference : differences)
    {
        told.push_back(difference.what + ": wanted " + difference.wanted + ", found " + difference.found);
    }
    return told;
}

} // namespace Zelnor::Testing
