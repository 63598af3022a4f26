#pragma once

// Private to the library, not installed.

#include "Media/Running/Descriptor.h"

#include <string>

namespace Zelnor::Media
{

/// The folder of a batch while it is made: a private one beside its place, named ".zelnor-batch-" and six
/// letters or digits, which takes its name when it is complete and disappears with this object otherwise. It
/// is locked, so that it can be told from one that a killed process has left, which the next one removes.
class NewBatchFolder
{
public:
    /// \throw RunException "'films' exists already", "Cannot make 'films': No such file or directory"
    explicit NewBatchFolder(const std::string& name);
    ~NewBatchFolder();
    NewBatchFolder(const NewBatchFolder&) = delete;
    NewBatchFolder& operator=(const NewBatchFolder&) = delete;

    /// The absolute name that it will have.
    const std::string& GetBase() const { return m_base; }
    /// May be called by several threads. \throw RunException
    void WriteJob(unsigned int number, const std::string& text) const;
    /// \throw RunException
    void Commit(const std::string& batchText);

private:
    [[noreturn]] void Fail(int reason) const;
    void WriteFile(const Descriptor& folder, const std::string& file, const std::string& text) const;
    void Make();

    std::string m_name;
    std::string m_base;
    std::string m_file; ///< the last part of its name
    std::string m_temporary;
    Descriptor m_parent;
    Descriptor m_folder;
    Descriptor m_jobs;
};

} // namespace Zelnor::Media
