#include "Media/Validating/JobValidation.h"

#include "Media/ErrorText.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Jobs/JobFile.h"
#include "Media/JsonText.h"
#include "Media/NearestNames.h"
#include "Media/Running/JobPreparation.h"
#include "Media/Validating/JobElements.h"
#include "Media/Validating/JobPlaces.h"

#include <exception>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// Reads the document as the graph does, but goes on after a fault.
class JobValidator
{
public:
    JobValidator(const std::string& text, const JsonPart& document, const std::string& name,
                 FaultCollector& faults)
        : m_text(text), m_document(document), m_name(name), m_faults(faults)
    {}

    void Validate()
    {
        CheckKeys(m_document, 0, {kSchemaKey, "vertices", "edges"}, Place{m_name}, m_faults);
        const auto nodes = List("vertices");
        const auto links = List("edges");
        m_elements.nodes = nodes ? ReadElements(*nodes, false) : std::vector<JobElement>();
        m_elements.links = links ? ReadElements(*links, true) : std::vector<JobElement>();
        if (!nodes || !links || !m_faults.IsComplete())
        {
            return;
        }
        LeaveOutBadLinks();
        CheckRecordsOfSources(m_document, m_elements, m_faults);
        if (const auto graph = Load())
        {
            FaultList found;
            JobFaultPlaces places(m_document, m_elements, m_faults);
            CheckJobDocument(*graph, m_name, found);
            for (const JobFault& fault : found.Get())
            {
                // Without some of the links, the rest tells nothing of how nodes are linked.
                if (m_hasBadLinks && (fault.IsOfTopology() || fault.kind == JobFault::Structure))
                {
                    continue;
                }
                if (!m_faults.IsComplete())
                {
                    break;
                }
                places.Add(fault);
            }
        }
    }

private:
    std::optional<JsonIndex::Id> List(const char* key)
    {
        const auto list = m_document.index.Member(0, key);
        if (list && m_document.index.KindOf(*list) == JsonIndex::Kind::Array)
        {
            return list;
        }
        const Place place = Place{m_name}.At(key);
        list ? m_faults.Add(DocumentFault::Form, place,
                            std::string("expected an array, found ") + KindText(m_document.index, *list),
                            m_document, *list)
             : m_faults.Add(DocumentFault::Form, place, "expected an array, found nothing", m_document, 0,
                            Aspect::Lack);
        return std::nullopt;
    }

    std::vector<JobElement> ReadElements(JsonIndex::Id list, bool isLink)
    {
        std::vector<JobElement> elements;
        for (const JsonIndex::Id value : m_document.index.Children(list))
        {
            if (!m_faults.IsComplete())
            {
                break;
            }
            if (auto element = ReadElement(m_document, value, isLink, m_name, m_faults))
            {
                m_isChanged = m_isChanged || element->isChanged;
                elements.push_back(std::move(*element));
            }
            else
            {
                m_isChanged = true;
            }
        }
        return elements;
    }

    /// Those to nodes that are not there, and those that are there already.
    void LeaveOutBadLinks()
    {
        const std::vector<BadLink> bad = FindBadLinks(m_elements);
        auto next = bad.begin();
        std::vector<JobElement> good;
        for (std::size_t i = 0; i < m_elements.links.size(); ++i)
        {
            JobElement& link = m_elements.links[i];
            if (next == bad.end() || next->position != i)
            {
                good.push_back(std::move(link));
                continue;
            }
            m_faults.Add(DocumentFault::Structure, link.place, next->reason, m_document,
                         MemberOr(m_document.index, link.value, next->key));
            ++next;
        }
        m_elements.links = std::move(good);
        m_hasBadLinks = !bad.empty();
        m_isChanged = m_isChanged || m_hasBadLinks;
    }

    /// The text as it is, if that can be; what is wrong with it is left out else.
    boost::intrusive_ptr<Conf::ITranscodingMetaGraph> Load()
    {
        const std::string changed = m_isChanged ? WriteElements(m_elements) : std::string();
        try
        {
            const auto graph = Conf::ITranscodingMetaGraph::Create();
            graph->Load(MakeTextInput(m_isChanged ? changed : m_text));
            return graph;
        }
        catch (const Exception&)
        {
            m_faults.Add(DocumentFault::Form, Place{m_name}, ErrorText(std::current_exception()), m_document,
                         0);
            return nullptr;
        }
    }

    const std::string& m_text;
    const JsonPart& m_document;
    const std::string& m_name;
    FaultCollector& m_faults;
    JobElements m_elements;
    bool m_isChanged = false;
    bool m_hasBadLinks = false;
};

} // namespace

void ValidateJob(const std::string& text, const JsonPart& document, const std::string& name,
                 FaultCollector& faults)
{
    JobValidator(text, document, name, faults).Validate();
}

} // namespace Zelnor::Media
