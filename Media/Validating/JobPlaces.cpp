#include "Media/Validating/JobPlaces.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/NearestNames.h"
#include "Media/Options/SettingRules.h"
#include "Media/Options/ValueNames.h"
#include "Media/Planning/CodecsInstead.h"
#include "Media/Planning/TargetKeys.h"
#include "Media/RecordText.h"
#include "Media/ValueText.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

DocumentFault::Kind KindFor(JobFault::Kind kind)
{
    switch (kind)
    {
    case JobFault::TooFewNodes:
    case JobFault::RepeatedIds:
    case JobFault::UnlinkedNodes:
    case JobFault::Cycle:
    case JobFault::SeveralParts:
        return DocumentFault::Topology;
    case JobFault::Structure:
        return DocumentFault::Structure;
    case JobFault::Encoder:
        return DocumentFault::Encoder;
    case JobFault::Container:
        return DocumentFault::Container;
    case JobFault::Input:
    case JobFault::Setting:
    case JobFault::Output:
    case JobFault::Loss:
        break;
    }
    return DocumentFault::Setting;
}

const JobElement* FindNode(const std::vector<JobElement>& nodes, Conf::NodeId id, bool isLast)
{
    const auto isMeant = [id](const JobElement& node) { return node.id == id; };
    if (isLast)
    {
        const auto found = std::find_if(nodes.rbegin(), nodes.rend(), isMeant);
        return found == nodes.rend() ? nullptr : &*found;
    }
    const auto found = std::find_if(nodes.begin(), nodes.end(), isMeant);
    return found == nodes.end() ? nullptr : &*found;
}

const JobElement* FindElement(const Place& place, const JobElements& elements)
{
    if (place.link)
    {
        const auto found = std::find_if(elements.links.begin(), elements.links.end(),
                                        [&](const JobElement& link) { return link.ends == *place.link; });
        return found == elements.links.end() ? nullptr : &*found;
    }
    return place.node ? FindNode(elements.nodes, *place.node, false) : nullptr;
}

/// The way through a record to the value of a key like "codec.options.encode.crf", as far as it is there.
class KeyPath
{
public:
    KeyPath(const Property& record, const JobFault& fault) : m_isRepeated(fault.reason == kRepeatedText)
    {
        m_isWhole = Walk(record, fault.place.key);
    }

    const std::vector<std::size_t>& Get() const { return m_path; }
    /// Null when the way ends before the value.
    const Property* Value() const { return m_isWhole ? m_value : nullptr; }

private:
    /// Names may hold dots.
    bool Walk(const Property& group, std::string_view key)
    {
        if (group.GetType() != PROPERTY_TYPE_GROUP)
        {
            return false;
        }
        bool isFound = false;
        std::size_t position = 0;
        for (const Property& child : group)
        {
            // Of keys that appear again, the later ones are wrong.
            if (child.GetName() == key && (!isFound || m_isRepeated))
            {
                m_path.resize(m_depth);
                m_path.push_back(position);
                m_value = &child;
                isFound = true;
            }
            ++position;
        }
        return isFound || WalkInside(group, key);
    }

    bool WalkInside(const Property& group, std::string_view key)
    {
        std::size_t position = 0;
        for (const Property& child : group)
        {
            const std::string start = child.GetName() + ".";
            if (key.substr(0, start.size()) == start)
            {
                m_path.push_back(position);
                ++m_depth;
                if (Walk(child, key.substr(start.size())))
                {
                    return true;
                }
                --m_depth;
                m_path.resize(m_depth);
            }
            ++position;
        }
        return false;
    }

    bool m_isRepeated;
    bool m_isWhole = false;
    std::size_t m_depth = 0;
    std::vector<std::size_t> m_path;
    const Property* m_value = nullptr;
};

/// The position of the setting that the fault calls unknown; nothing for other faults.
std::optional<std::size_t> FindUnknownSetting(const Property& record, const JobFault& fault)
{
    if (record.GetType() != PROPERTY_TYPE_GROUP || fault.reason.compare(0, 8, "unknown ") != 0)
    {
        return std::nullopt;
    }
    std::size_t position = 0;
    for (const Property& setting : record)
    {
        // The whole text takes long to make: it names the settings that are near.
        const bool isNamed = fault.reason.find("'" + setting.GetName() + "'") != std::string::npos;
        if (isNamed && !IsSettingKnown(setting.GetName()) &&
            UnknownSettingText(setting.GetName()) == fault.reason)
        {
            return position;
        }
        ++position;
    }
    return std::nullopt;
}

/// The position of the member that is wrong in a list of a target or a source; nothing where the fault is
/// about the list itself.
std::optional<std::size_t> FindFaultyMember(const Property* list, const std::string& reason)
{
    if (list == nullptr || list->GetType() != PROPERTY_TYPE_GROUP)
    {
        return std::nullopt;
    }
    std::size_t position = 0;
    std::set<std::string> seen;
    for (const Property& member : *list)
    {
        const std::string text = ValueText(member);
        const bool isChapter = list->GetName() != JobKeys::kChapters || IsChapter(member);
        const bool isIndex =
            reason != "expected the index of a stream, found " + text &&
            reason != "expected the index of a cover or attachment of the first source, found " + text;
        const bool isFirst = reason != "stream " + text + " is listed twice" || seen.insert(text).second;
        if (!isChapter || !isIndex || !isFirst)
        {
            return position;
        }
        ++position;
    }
    return std::nullopt;
}

/// Codecs that the target's container holds, where the one of a link is not among them.
std::vector<std::string> CodecsInstead(const JobFault& fault, const JobElement& link,
                                       const JobElements& elements)
{
    const JobElement* const target = fault.kind == JobFault::Container && fault.place.link
                                         ? FindNode(elements.nodes, fault.place.link->second, false)
                                         : nullptr;
    return target == nullptr ? std::vector<std::string>()
                             : CodecsFor(TextUnder(target->record, Conf::IFormatFile::TAG_CONTAINER),
                                         TextUnder(link.record, Conf::IFormatCodec::TAG_CODEC_ID));
}

void AddTopologyFault(const JobFault& fault, const JsonPart& document, const JobElements& elements,
                      FaultCollector& faults)
{
    const auto add = [&](const JobFault& part, Conf::NodeId node) {
        const JobElement* const element = FindNode(elements.nodes, node, part.kind == JobFault::RepeatedIds);
        faults.Add(DocumentFault::Topology, part.place, part.Sentence(), document,
                   element == nullptr ? 0 : MemberOr(document.index, element->value, "id"));
    };
    switch (fault.kind)
    {
    case JobFault::UnlinkedNodes:
    case JobFault::RepeatedIds:
        for (const Conf::NodeId node : fault.groups.front())
        {
            add({fault.kind, {{node}}, fault.place, ""}, node);
            if (!faults.IsComplete())
            {
                break;
            }
        }
        break;
    case JobFault::Cycle:
        add(fault, fault.groups.front().front());
        break;
    case JobFault::SeveralParts:
        add(fault, fault.groups.back().front());
        break;
    default:
        faults.Add(DocumentFault::Topology, fault.place, fault.Sentence(), document,
                   MemberOr(document.index, 0, "vertices"));
    }
}

} // namespace

const JsonPart& JobFaultPlaces::PartOf(JsonIndex::Id data)
{
    if (!m_part || m_part->place != data)
    {
        m_part.emplace(DataPart(m_document, data));
    }
    return *m_part;
}

void JobFaultPlaces::Add(const JobFault& fault)
{
    if (fault.IsOfTopology())
    {
        AddTopologyFault(fault, m_document, m_elements, m_faults);
        return;
    }
    const JobElement* const element = FindElement(fault.place, m_elements);
    const DocumentFault::Kind kind = KindFor(fault.kind);
    if (element == nullptr || !element->data)
    {
        m_faults.Add(kind, fault.place, fault.reason, m_document, element == nullptr ? 0 : element->value,
                     fault.place.key.empty() ? Aspect::Value : Aspect::Lack);
        return;
    }
    const JsonPart& part = PartOf(*element->data);
    if (const auto unknown = FindUnknownSetting(element->record, fault))
    {
        const JsonIndex::Id value = ValueAt(part, {0, *unknown});
        m_faults.Add(kind, fault.place, fault.reason, part, value, Aspect::Key,
                     NearestNames(part.index.KeyOf(value), KnownSettings()));
        return;
    }
    const KeyPath path(element->record, fault);
    std::vector<std::size_t> positions = path.Get();
    positions.insert(positions.begin(), 0);
    if (const auto member = FindFaultyMember(path.Value(), fault.reason))
    {
        positions.push_back(*member);
    }
    const bool isLack = path.Value() == nullptr && !fault.place.key.empty();
    const Aspect aspect = isLack ? Aspect::Lack : fault.reason == kRepeatedText ? Aspect::Key : Aspect::Value;
    const std::vector<std::string> codecs = CodecsInstead(fault, *element, m_elements);
    m_faults.Add(kind, fault.place, fault.reason, part, ValueAt(part, positions), aspect,
                 codecs.empty() ? NearestValues(path.Value()) : codecs);
}

} // namespace Zelnor::Media
