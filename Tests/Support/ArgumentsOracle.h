#pragma once

#include "Tests/Support/ArgumentsOracleValues.h"

#include "Core/Interfaces/Property.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Running/FFmpegArguments.h"
#include "Media/Running/Transcode.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// \file
/// Reads ffmpeg's arguments back as ffmpeg would, with a table of its own, and says what in them a job has no
/// right to: an option that is not in the table, a file that is neither a source nor the target, a value that
/// is not the record's. What it knows is written down here anew; nothing is shared with what it watches.

namespace Zelnor::Testing
{

/// The arguments of one run, and the records they were made from.
class ArgumentsOracle
{
public:
    ArgumentsOracle(const Media::Transcode& transcode, std::string output, std::string passLog)
        : m_transcode(transcode), m_output(std::move(output)), m_passLog(std::move(passLog))
    {}

    /// What is wrong with the arguments; empty when they hold what they may.
    std::string FindFault(const std::vector<std::string>& arguments)
    {
        m_arguments = arguments;
        m_next = 0;
        m_fault.clear();
        m_inputs = 0;
        m_options.clear();
        ReadGlobal();
        while (m_fault.empty() && m_inputs < m_transcode.inputs.size())
        {
            ReadInput();
        }
        ReadChapters();
        while (m_fault.empty() && m_next + 1 < m_arguments.size())
        {
            ReadOutput();
        }
        if (m_fault.empty() &&
            (m_next + 1 != m_arguments.size() ||
             (m_arguments.back() != "file:" + m_output && m_arguments.back() != "file:/dev/null")))
        {
            Refuse("expected the target at the end");
        }
        if (m_fault.empty())
        {
            FindLoss();
        }
        return m_fault;
    }

private:
    void Refuse(const std::string& reason)
    {
        m_fault = m_fault.empty() ? reason : m_fault;
        for (std::size_t i = m_next > 2 ? m_next - 2 : 0; i < m_arguments.size() && i < m_next + 2; ++i)
        {
            m_fault += " <" + m_arguments[i] + ">";
        }
    }

    std::string Take()
    {
        if (m_next == m_arguments.size())
        {
            Refuse("an argument is missing");
            return "";
        }
        return m_arguments[m_next++];
    }

    void Expect(const std::string& text)
    {
        if (Take() != text)
        {
            Refuse("expected " + text);
        }
    }

    void ReadGlobal()
    {
        for (const char* const text :
             {"-hide_banner", "-nostdin", "-v", "error", "-nostats", "-progress", "pipe:1"})
        {
            Expect(text);
        }
        const std::string replace = Take();
        if (replace != "-y" && replace != "-n")
        {
            Refuse("expected -y or -n");
        }
    }

    /// Only files, by the demuxer that was found, and no other name than the source's.
    void ReadInput()
    {
        const Media::MediaFile& source = m_transcode.inputs[m_inputs];
        const std::string demuxer = source.demuxer.substr(0, source.demuxer.find(','));
        for (const std::string& text :
             {std::string("-protocol_whitelist"), std::string("file"), std::string("-f"), demuxer})
        {
            Expect(text);
        }
        if (demuxer == "image2")
        {
            Expect("-pattern_type");
            Expect("none");
        }
        if (m_transcode.span.start > 0 && m_transcode.SeeksInInputs())
        {
            Expect("-ss");
            Expect(std::to_string(m_transcode.span.start) + "us");
        }
        std::string option = Take();
        while (m_fault.empty() && option != "-i")
        {
            if (!details::Matches(option, "-fix_sub_duration:[0-9]+"))
            {
                ReadDecoderOption(option);
            }
            option = Take();
        }
        Expect("file:" + source.name);
        ++m_inputs;
    }

    /// Chapters come as data, in a format that names no files.
    void ReadChapters()
    {
        if (m_next == m_arguments.size() || m_arguments[m_next] != "-protocol_whitelist")
        {
            return;
        }
        for (const char* const text : {"-protocol_whitelist", "data", "-f", "ffmetadata", "-i"})
        {
            Expect(text);
        }
        if (!details::Matches(Take(), "data:text/plain;base64,[A-Za-z0-9+/]*=*"))
        {
            Refuse("not chapters");
        }
    }

    /// "-skip_frame:0"; the name and the number, which is the last thing.
    std::optional<std::pair<std::string, unsigned int>> Split(const std::string& option)
    {
        const std::size_t colon = option.find(':');
        const std::string number = colon == std::string::npos ? "" : option.substr(colon + 1);
        if (!details::Matches(option.substr(0, colon), "-[A-Za-z0-9][A-Za-z0-9_-]*") ||
            !details::Matches(number, "[0-9]{1,5}"))
        {
            Refuse("not an option for one stream");
            return std::nullopt;
        }
        return std::pair(option.substr(1, colon - 1), static_cast<unsigned int>(std::stoul(number)));
    }

    void ReadDecoderOption(const std::string& text)
    {
        const auto option = Split(text);
        const std::string value = Take();
        if (!option)
        {
            return;
        }
        const std::vector<Media::MediaStream>& streams = m_transcode.inputs[m_inputs].streams;
        const AVCodecDescriptor* const codec =
            option->second < streams.size()
                ? avcodec_descriptor_get_by_name(streams[option->second].codec.c_str())
                : nullptr;
        const AVCodec* const decoder = codec == nullptr ? nullptr : avcodec_find_decoder(codec->id);
        const AVOption* const found =
            decoder == nullptr ? nullptr : details::OptionOf(*decoder, option->first);
        if (found == nullptr || (found->flags & AV_OPT_FLAG_DECODING_PARAM) == 0 ||
            found->type == AV_OPT_TYPE_STRING || details::IsOfTheProgram(option->first) ||
            !details::IsPlain(value))
        {
            Refuse("not an option of the decoder, or not a value");
        }
        const bool isAsked =
            std::any_of(m_transcode.streams.begin(), m_transcode.streams.end(), [&](const auto& stream) {
                return stream.input == m_inputs && stream.stream == option->second &&
                       details::TextUnder(stream.codec, "codec.options.analyze", option->first) == value;
            });
        if (!isAsked)
        {
            Refuse("no record asks for this");
        }
    }

    void ReadOutput()
    {
        const std::string option = Take();
        static const std::map<std::string, const char*> s_plain = {
            {"-map", R"([0-9]+:[0-9]+|\[merged[0-9]+\])"},
            {"-map_metadata", "-1"},
            {"-map_metadata:g", "-1"},
            {"-map_metadata:s", "-1"},
            {"-map_chapters", "-1|[0-9]+"},
            {"-write_id3v2", "1"},
            {"-max_muxing_queue_size", "4096"},
            {"-update", "1"},
            {"-movflags", R"(\+faststart)"},
            {"-muxrate", "10080000"},
            {"-packetsize", "2048"},
        };
        const auto plain = s_plain.find(option);
        if (plain != s_plain.end())
        {
            if (!details::Matches(Take(), plain->second))
            {
                Refuse("not a value of " + option);
            }
        }
        else if (option == "-ss")
        {
            if (m_transcode.SeeksInInputs() || Take() != std::to_string(m_transcode.span.start) + "us")
            {
                Refuse("not the beginning of the part");
            }
        }
        else if (option == "-t")
        {
            if (!m_transcode.span.end ||
                Take() != std::to_string(*m_transcode.span.end - m_transcode.span.start) + "us")
            {
                Refuse("not the length of the part");
            }
        }
        else if (option == "-f")
        {
            if (!details::Matches(Take(), "[a-z0-9_]+"))
            {
                Refuse("not a muxer");
            }
        }
        else if (option == "-filter_complex")
        {
            CheckFilters(Take(), true);
        }
        else if (option == "-metadata" || details::Matches(option, "-metadata:s:[0-9]+"))
        {
            ReadTag(option);
        }
        else
        {
            ReadStreamOption(option);
        }
    }

    void ReadTag(const std::string& option)
    {
        const std::string text = Take();
        const std::size_t equals = text.find('=');
        const std::string key = text.substr(0, equals);
        const Core::Property& record =
            option == "-metadata" ? m_transcode.target : StreamAt(std::stoul(option.substr(12))).codec;
        const bool isAsked =
            equals != std::string::npos && !key.empty() &&
            (details::TextUnder(record, "metadata", key) == text.substr(equals + 1) ||
             (key == "language" && details::TextUnder(record, key) == text.substr(equals + 1)));
        if (!isAsked)
        {
            Refuse("no record asks for this tag");
        }
    }

    /// The stream of the output at that position; in a first pass, those of one pass are left out.
    const Media::TranscodeStream& StreamAt(std::size_t position)
    {
        const bool isFirstPass = m_arguments.back() == "file:/dev/null";
        for (const Media::TranscodeStream& stream : m_transcode.streams)
        {
            const std::string passes = details::TextUnder(stream.codec, "two_pass_encoding").value_or("0");
            const bool isIn =
                !isFirstPass || (passes != "0" && passes != "one_pass" && !IsCopied(stream.codec));
            if (isIn && position-- == 0)
            {
                return stream;
            }
        }
        Refuse("there is no such stream");
        return m_transcode.streams.front();
    }

    static bool IsCopied(const Core::Property& codec)
    {
        const std::string encoder = details::TextUnder(codec, "preferred_encoder").value_or("");
        return details::TextUnder(codec, "lossless").value_or("0") != "0" ||
               encoder == "ENCODER_LOSSLESS_VIDEO" || encoder == "ENCODER_LOSSLESS_AUDIO";
    }

    void ReadStreamOption(const std::string& text)
    {
        const auto option = Split(text);
        const std::string value = Take();
        if (!option)
        {
            return;
        }
        const auto& [name, position] = *option;
        const Core::Property& codec = StreamAt(position).codec;
        m_options[position].emplace_back(name, value);
        if (name == "c")
        {
            const AVCodec* const encoder = avcodec_find_encoder_by_name(value.c_str());
            m_encoders[position] = encoder;
            if (encoder == nullptr && value != "copy")
            {
                Refuse("not an encoder");
            }
        }
        else if (name == "filter")
        {
            CheckFilters(value, false);
        }
        else if (name == "passlogfile")
        {
            if (value.compare(0, m_passLog.size(), m_passLog) != 0 ||
                !details::Matches(value.substr(m_passLog.size()), "[0-9]+-[0-9]+"))
            {
                Refuse("not the log of a pass");
            }
        }
        else if (!IsKnown(name, value, codec) && !IsFree(name, value, codec, m_encoders[position]))
        {
            Refuse("no record asks for this option");
        }
    }

    /// "avc1" for the number that it is in a container.
    static std::string CharactersOf(const std::string& number)
    {
        std::string text;
        unsigned long long rest = std::stoull(number);
        for (int i = 0; i < 4; ++i)
        {
            text += static_cast<char>(rest & 0xFFU);
            rest >>= 8U;
        }
        return text;
    }

    /// Options that the settings of the vocabulary stand for.
    static bool IsKnown(const std::string& name, const std::string& value, const Core::Property& codec)
    {
        struct Row
        {
            const char* name;
            const char* values;
            const char* key; ///< whose text the value is; empty: it is calculated
        };
        static const Row s_rows[] = {
            {"b", "[1-9][0-9]*", ""},
            {"minrate", "[0-9]+", ""},
            {"maxrate", "[0-9]+", ""},
            {"bufsize", "[0-9]+", ""},
            {"vbr", "on|off", ""},
            {"abr", "1", ""},
            {"profile", "[a-z0-9_]+", ""},
            {"preset", "[a-z]+", "preset"},
            {"tune", "[a-z]+", "tune"},
            {"mbd", "simple|bits|rd", ""},
            {"trellis", "[0-2]", ""},
            {"tag", "[0-9]{1,10}", "codec_fourcc"},
            {"threads", "0", ""},
            {"threads", "[0-9]+|auto", "number_of_threads"},
            {"flags", R"((\+ildct\+ilme)?(\+global_header)?)", ""},
            {"disposition", "0|default", ""},
            {"g", "1", ""},
            {"g", "-?[0-9]+", "maxIFrameInterval"},
            {"bf", "-?[0-9]+", "maxBFrameSequence"},
            {"me_range", "-?[0-9]+", "motionSrchRng"},
            {"slice-max-size", "-?[0-9]+", "slice-max-size"},
            {"dpi", "[0-9]+", "dpi"},
            {"pass", "[12]", ""},
            {"frames", "1", ""},
        };
        return std::any_of(std::begin(s_rows), std::end(s_rows), [&](const Row& row) {
            return name == row.name && details::Matches(value, row.values) &&
                   (*row.key == '\0' || details::TextUnder(codec, row.key) == value ||
                    (name == "tag" && CharactersOf(value) == details::TextUnder(codec, row.key)));
        });
    }

    /// Options that the record gives by FFmpeg's names.
    static bool IsFree(const std::string& name, const std::string& value, const Core::Property& codec,
                       const AVCodec* encoder)
    {
        const AVOption* const option = encoder == nullptr ? nullptr : details::OptionOf(*encoder, name);
        if (option == nullptr || (option->flags & AV_OPT_FLAG_ENCODING_PARAM) == 0 ||
            details::IsOfTheProgram(name))
        {
            return false;
        }
        const bool isText = option->type == AV_OPT_TYPE_STRING || option->type == AV_OPT_TYPE_DICT ||
                            option->type == AV_OPT_TYPE_BINARY;
        if (isText ? !details::MayBeText(encoder->name, name, value) : !details::IsPlain(value))
        {
            return false;
        }
        auto asked = details::TextUnder(codec, "codec.options.encode", name);
        asked = !asked && name == "x264opts" ? details::TextUnder(codec, name) : asked;
        asked = !asked && (name == "bf" || name == "me_range" || name == "slice-max-size" || name == "dpi" ||
                           name == "g")
                    ? details::TextUnder(codec, name == "bf"         ? "maxBFrameSequence"
                                                : name == "me_range" ? "motionSrchRng"
                                                : name == "g"        ? "maxIFrameInterval"
                                                                     : name)
                    : asked;
        const std::string interlaced = "+ildct+ilme";
        const std::string free = value.compare(0, interlaced.size(), interlaced) == 0 &&
                                         details::TextUnder(codec, "deinterlace") == "keep"
                                     ? value.substr(interlaced.size())
                                     : value;
        return asked && (*asked == free || "+" + *asked == free || *asked + "+global_header" == free ||
                         "+" + *asked + "+global_header" == free || Expanded(*asked) == free);
    }

    /// Parameters without a value are given 1.
    static std::string Expanded(const std::string& parameters)
    {
        return std::regex_replace(parameters, std::regex("(^|:)([^:=]+)(?=:|$)"), "$1$2=1");
    }

    static bool IsFilter(const std::string& text)
    {
        static const std::string s_scale =
            "scale=([0-9]+:[0-9]+)?(:interl=1)?(:?flags=bicubic\\+accurate_rnd\\+full_chroma_int)?"
            "(:?in_color_matrix=[a-z0-9]+)?(:?out_color_matrix=[a-z0-9]+)?(:?in_range=(tv|pc))?"
            "(:?out_range=(tv|pc))?";
        static const std::string s_filter =
            "yadif=(mode=send_field:)?deint=interlaced|setfield=(tff|bff|prog)|fps=[0-9]+/[0-9]+|" + s_scale +
            "|pad=[0-9]+:[0-9]+:[0-9]+:[0-9]+|setsar=[0-9]+/[0-9]+:max=65535|format=[a-z0-9]+|"
            "zscale=tin=[a-z0-9-]+:min=[a-z0-9-]+:pin=[a-z0-9-]+:rin=(tv|pc):t=linear:npl=100|"
            "zscale=p=[a-z0-9-]+|tonemap=tonemap=hable:desat=0|zscale=t=[a-z0-9-]+:m=[a-z0-9-]+:r=(tv|pc)|"
            "setparams=((range|colorspace|color_primaries|color_trc)=[a-z0-9-]+:?)+|"
            "aformat=[a-z0-9_=:.()]+|"
            "split\\[clip\\]\\[colours\\];\\[colours\\]palettegen\\[palette\\];\\[clip\\]\\[palette\\]"
            "paletteuse";
        return details::Matches(text, s_filter.c_str());
    }

    void CheckFilters(const std::string& filters, bool mayMerge)
    {
        std::string rest = filters;
        if (mayMerge)
        {
            const std::size_t label = rest.rfind("[merged");
            if (label == std::string::npos || !details::Matches(rest.substr(label), R"(\[merged[0-9]+\])"))
            {
                return Refuse("filters without an end");
            }
            rest = TakeMerge(rest.substr(0, label));
        }
        while (!rest.empty() && m_fault.empty())
        {
            std::size_t end =
                rest.compare(0, 6, "split[") == 0 ? rest.size() : std::min(rest.find(','), rest.size());
            if (!IsFilter(rest.substr(0, end)))
            {
                return Refuse("not a filter: " + rest.substr(0, end));
            }
            rest.erase(0, end + 1);
        }
    }

    /// Reads what merges streams. \returns the filters after it
    std::string TakeMerge(const std::string& filters)
    {
        std::string rest = filters;
        const auto take = [&rest](const std::string& text) {
            const bool isNext = rest.compare(0, text.size(), text) == 0;
            rest.erase(0, isNext ? text.size() : 0);
            return isNext;
        };
        const auto takeLabels = [&rest] {
            std::smatch labels;
            static const std::regex s_labels(R"(^(\[[0-9]+:[0-9]+\])*)");
            std::regex_search(rest, labels, s_labels);
            rest.erase(0, static_cast<std::size_t>(labels.length()));
        };
        std::smatch bitmap;
        static const std::regex s_bitmap(
            R"(^\[[0-9]+:[0-9]+\](scale=[0-9]+:[0-9]+)(:force_original_aspect_ratio=decrease)?)"
            R"((:out_color_matrix=[a-z0-9]+)?\[bitmap[0-9]+\];)");
        while (std::regex_search(rest, bitmap, s_bitmap))
        {
            rest.erase(0, static_cast<std::size_t>(bitmap.length()));
        }
        takeLabels();
        TakeTime(rest);
        const std::string shift = std::to_string(m_transcode.span.start) + "/1000000/TB";
        while (m_fault.empty())
        {
            const bool isShifted = m_transcode.span.start > 0 && m_transcode.SeeksInInputs() &&
                                   take("setpts=PTS+" + shift + ",");
            std::smatch drawn;
            static const std::regex s_drawn(
                R"(^\[bitmap[0-9]+\]overlay=x=\(W-w\)/2:y=\(H-h\)/2:eof_action=pass:format=auto)");
            std::smatch mix;
            static const std::regex s_mix("^amix=inputs=[0-9]+:normalize=0");
            if (std::regex_search(rest, mix, s_mix))
            {
                rest.erase(0, static_cast<std::size_t>(mix.length()));
            }
            else if (take("subtitles=filename="))
            {
                TakeFileName(rest);
            }
            else if (std::regex_search(rest, drawn, s_drawn))
            {
                rest.erase(0, static_cast<std::size_t>(drawn.length()));
            }
            else
            {
                Refuse("not a merge: " + rest);
            }
            if (isShifted && !take(",setpts=PTS-" + shift))
            {
                Refuse("not shifted back: " + rest);
            }
            if (!take("[drawn];[drawn]"))
            {
                break;
            }
            takeLabels();
        }
        take(",");
        return rest;
    }

    /// Reads the filters that make the frames on which something is drawn.
    void TakeTime(std::string& rest)
    {
        static const std::string kEnd = "[base];[base]";
        const std::size_t end = rest.find(kEnd);
        const std::size_t file = rest.find("subtitles=");
        if (end == std::string::npos || file < end)
        {
            return;
        }
        std::string time = rest.substr(0, end);
        rest.erase(0, end + kEnd.size());
        while (!time.empty() && m_fault.empty())
        {
            const std::size_t comma = std::min(time.find(','), time.size());
            if (!IsFilter(time.substr(0, comma)))
            {
                Refuse("not a filter: " + time);
            }
            time.erase(0, comma + 1);
        }
    }

    /// Undoes both levels of escapes, as the parsers of a filter graph and of its options do.
    void TakeFileName(std::string& rest)
    {
        std::string option;
        std::size_t i = 0;
        for (; i < rest.size() && std::string("[],;").find(rest[i]) == std::string::npos; ++i)
        {
            if (rest[i] == '\'')
            {
                return Refuse("a quote that is not escaped");
            }
            i += rest[i] == '\\' ? 1 : 0;
            option += i < rest.size() ? std::string(1, rest[i]) : "";
        }
        rest.erase(0, i);
        std::string name;
        std::size_t end = 0;
        for (; end < option.size() && option[end] != ':'; ++end)
        {
            if (option[end] == '\'')
            {
                return Refuse("a quote that is not escaped");
            }
            end += option[end] == '\\' ? 1 : 0;
            name += end < option.size() ? std::string(1, option[end]) : "";
        }
        const bool isSource =
            std::any_of(m_transcode.inputs.begin(), m_transcode.inputs.end(),
                        [&name](const Media::MediaFile& input) { return name == "file:" + input.name; });
        if (!isSource || !details::Matches(option.substr(end), ":si=[0-9]+"))
        {
            Refuse("subtitles of another file: " + name);
        }
    }

    /// Every free option of a record must have arrived.
    void FindLoss()
    {
        if (m_arguments.back() == "file:/dev/null")
        {
            return;
        }
        for (std::size_t i = 0; i < m_transcode.streams.size(); ++i)
        {
            const Core::Property& codec = m_transcode.streams[i].codec;
            const auto group = codec.FindChild("codec.options.encode");
            if (group == codec.end() || IsCopied(codec))
            {
                continue;
            }
            for (const Core::Property& option : *group)
            {
                const auto count =
                    std::count_if(m_options[i].begin(), m_options[i].end(),
                                  [&](const auto& given) { return given.first == option.GetName(); });
                if (count != 1)
                {
                    Refuse("the option '" + option.GetName() + "' is given " + std::to_string(count) +
                           " times");
                }
            }
        }
    }

    const Media::Transcode& m_transcode;
    std::string m_output;
    std::string m_passLog;
    std::vector<std::string> m_arguments;
    std::size_t m_next = 0;
    std::size_t m_inputs = 0;
    std::string m_fault;
    std::map<std::size_t, std::vector<std::pair<std::string, std::string>>> m_options; ///< by stream
    std::map<std::size_t, const AVCodec*> m_encoders;
};

/// What is wrong with the arguments of the runs that make the transcode. Nothing is asked about transcodes
/// that are refused. \param isAccepted  set to whether the transcode was not refused
inline std::string FindArgumentsFault(const Media::Transcode& transcode, bool& isAccepted)
{
    Media::FaultList faults;
    const std::vector<Media::FFmpegPass> passes = Media::MakeFFmpegArguments(transcode, faults);
    isAccepted = faults.Count() == 0;
    for (std::size_t i = 0; isAccepted && i < passes.size(); ++i)
    {
        const std::vector<std::string> arguments =
            passes[i].Arguments({"/made/out put.tmp", "/log/pass-", true});
        const std::string fault =
            ArgumentsOracle(transcode, "/made/out put.tmp", "/log/pass-").FindFault(arguments);
        if (!fault.empty())
        {
            return fault;
        }
    }
    return "";
}

} // namespace Zelnor::Testing
