#include "Media/Batch/InputFiles.h"

#include "Media/Folder.h"
#include "Media/Running/Files.h"
#include "Media/Text.h"

#include "Conf/Interfaces/MediaTypeUtils.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatFile;

std::unordered_set<std::string> MediaExtensions()
{
    std::unordered_set<std::string> extensions;
    for (const auto& [type, group] : Conf::GetSupportedFormats())
    {
        if (type == IFormatFile::MEDIA_VIDEO || type == IFormatFile::MEDIA_AUDIO)
        {
            for (const std::string& extension : Conf::GetSupportedFormatExtensions(group))
            {
                extensions.insert(extension);
            }
        }
    }
    return extensions;
}

using FolderId = std::pair<dev_t, ino_t>;

/// The same for each spelling of a name. Two links to one file are two names.
std::string NameIdentity(const std::string& path)
{
    const std::filesystem::path name(path);
    const std::string folder = name.parent_path().string();
    return FileIdentity(folder.empty() ? "." : folder) + "/" + name.filename().string();
}

/// The names in a folder, in order, without the hidden ones; empty when it cannot be listed.
/// \param reason  the error number then, else 0
std::vector<std::string> ListFolder(const std::string& path, int& reason)
{
    const Folder folder(::opendir(path.c_str()));
    reason = folder == nullptr ? errno : 0;
    std::vector<std::string> names = NamesIn(folder);
    const auto isHidden = [](const std::string& name) { return name.front() == '.'; };
    names.erase(std::remove_if(names.begin(), names.end(), isHidden), names.end());
    std::sort(names.begin(), names.end());
    return names;
}

class FolderWalk
{
public:
    FolderWalk(const std::string& outputs, const std::function<bool()>& isCancelled)
        : m_isCancelled(isCancelled)
    {
        struct stat status = {};
        if (::stat(outputs.c_str(), &status) == 0)
        {
            m_outputs = {status.st_dev, status.st_ino};
        }
    }

    void Add(const std::string& name)
    {
        struct stat status = {};
        if (::stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        {
            AddFolder(name, {status.st_dev, status.st_ino});
        }
        else
        {
            AddFile(name);
        }
    }

    std::vector<InputFile> Take() { return std::move(m_files); }

private:
    void AddFile(const std::string& path, const std::string& reason = "")
    {
        if (m_known.insert(NameIdentity(path)).second)
        {
            m_files.push_back({path, reason});
        }
    }

    void AddFolder(const std::string& path, const FolderId& id)
    {
        if (m_isCancelled() || !m_visited.insert(id).second)
        {
            return;
        }
        // It is closed before those below it are opened: trees are deeper than a process has open files.
        int reason = 0;
        const std::vector<std::string> names = ListFolder(path, reason);
        if (reason != 0)
        {
            AddFile(path, path + ": cannot be listed: " + std::generic_category().message(reason));
            return;
        }
        for (const std::string& name : names)
        {
            AddEntry((path.back() == '/' ? path : path + "/") + name);
        }
    }

    void AddEntry(const std::string& path)
    {
        struct stat status = {};
        if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        {
            const FolderId id(status.st_dev, status.st_ino);
            if (id != m_outputs)
            {
                AddFolder(path, id);
            }
            return;
        }
        const std::string extension = std::filesystem::path(path).extension().string();
        if (!extension.empty() && m_extensions.count(LowerCase(extension.substr(1))) != 0)
        {
            AddFile(path);
        }
    }

    const std::function<bool()>& m_isCancelled;
    FolderId m_outputs = {};
    const std::unordered_set<std::string> m_extensions = MediaExtensions();
    std::set<FolderId> m_visited;
    std::set<std::string> m_known;
    std::vector<InputFile> m_files;
};

} // namespace

std::vector<InputFile> FindInputFiles(const std::vector<std::string>& names, const std::string& outputs,
                                      const std::function<bool()>& isCancelled)
{
    FolderWalk walk(outputs, isCancelled);
    for (const std::string& name : names)
    {
        walk.Add(name);
    }
    return walk.Take();
}

} // namespace Zelnor::Media
