#include "Tools/zconf/Console/Output.h"

#include "Tools/zconf/Console/StandardStreams.h"

#include <sys/stat.h>

namespace Zelnor::Tool
{

bool IsStandardStream(const std::string& name) { return name == "-"; }

bool IsReplaceable(const std::string& name)
{
    struct stat status = {};
    return ::stat(name.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

void WriteText(const std::string& text) { MakeStandardOutput()->Write(text.data(), text.size()); }

void WriteDocument(const std::string& name,
                   const std::function<void(const boost::intrusive_ptr<Core::IDataOutput>&)>& write)
{
    if (IsStandardStream(name))
    {
        write(MakeStandardOutput());
    }
    else if (IsReplaceable(name))
    {
        const auto file = Core::AtomicFileDataOutput::Create(name);
        write(file);
        file->Commit();
    }
    else
    {
        write(Core::FileDataOutput::Create(name));
    }
}

void WriteDocument(const std::string& name, const std::string& text)
{
    WriteDocument(name, [&text](const boost::intrusive_ptr<Core::IDataOutput>& output) {
        output->Write(text.data(), text.size());
    });
}

} // namespace Zelnor::Tool
