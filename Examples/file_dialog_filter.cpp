#include "Conf/Interfaces/MediaTypeUtils.h"

#include <algorithm>
#include <iostream>
#include <set>

using namespace Zelnor::Conf;

namespace
{

/// "MP4 (*.mp4 *.m4v)": what most toolkits take as one entry of a file dialog.
std::string FilterOf(const std::string& group)
{
    std::string filter;
    std::set<std::string> seen; // Some extensions occur twice.
    for (const std::string& extension : GetSupportedFormatExtensions(group))
    {
        if (seen.insert(extension).second)
        {
            filter += (filter.empty() ? "" : " ") + (extension == "*" ? extension : "*." + extension);
        }
    }
    return group + " (" + filter + ")";
}

} // namespace

int main()
{
    // To open a file of sound: the groups of that kind, in the order in which a dialog shows them.
    std::cout << "Open\n";
    for (const auto& [kind, group] : GetSupportedFormats())
    {
        if (kind == IFormatFile::MEDIA_AUDIO || kind == IFormatFile::MEDIA_ALL)
        {
            std::cout << "  " << FilterOf(group) << "\n";
        }
    }
    // To save one: the extension that the chosen container asks for.
    std::cout << "Save as\n";
    for (const std::string& container : {IFormatFile::FORMAT_MP4, IFormatFile::FORMAT_MATROSKA,
                                         IFormatFile::FORMAT_WEBM, IFormatFile::FORMAT_FLAC})
    {
        std::cout << "  holiday." << GetDefaultFileExtensionForContainer(container) << "\n";
    }
}
