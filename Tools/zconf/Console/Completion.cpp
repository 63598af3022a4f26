#include "Tools/zconf/Console/Completion.h"

#include <algorithm>
#include <set>

namespace Zelnor::Tool
{

namespace
{

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

/// Such a name would break the lines in which a shell is answered.
bool HasControls(const std::string& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
}

/// The part of a help text that fits beside a word.
std::string Brief(const std::string& help)
{
    return help.substr(0, std::min(help.find(" ("), help.find("; ")));
}

/// A command line up to the word at the cursor.
class TypedLine
{
public:
    explicit TypedLine(const CommandUsage& program) : m_command(&program) {}

    void Read(const std::string& word)
    {
        if (m_pending != nullptr)
        {
            m_pending = nullptr;
        }
        else if (!m_onlyArguments && word == "--")
        {
            m_onlyArguments = true;
        }
        else if (IsOption(word))
        {
            ReadOption(word);
        }
        else if (!m_command->commands.empty())
        {
            ReadCommand(word);
        }
        else
        {
            m_given.push_back(word);
        }
    }

    Completion Complete(const std::string& word, const ValuesOf& valuesOf) const
    {
        if (!m_isKnown)
        {
            return {};
        }
        if (m_pending != nullptr)
        {
            return Values(*m_pending, word, valuesOf);
        }
        const std::size_t equals = word.find('=');
        if (IsOption(word) && equals != std::string::npos)
        {
            const OptionUsage* const option = Find(word.substr(0, equals));
            return option == nullptr ? Completion{} : Values(*option, word.substr(equals + 1), valuesOf);
        }
        if (!m_onlyArguments && StartsWith(word, "-"))
        {
            return Options(word);
        }
        if (!m_command->commands.empty())
        {
            return Commands(word);
        }
        const OptionUsage* const argument = NextArgument();
        return argument != nullptr ? Values(*argument, word, valuesOf) : Options(word);
    }

private:
    bool IsOption(const std::string& word) const
    {
        return !m_onlyArguments && word.size() > 1 && word.front() == '-';
    }

    const OptionUsage* Find(const std::string& name) const
    {
        for (const OptionUsage& option : m_command->options)
        {
            if (std::find(option.names.begin(), option.names.end(), name) != option.names.end())
            {
                return &option;
            }
        }
        return nullptr;
    }

    void ReadOption(const std::string& word)
    {
        const std::size_t equals = word.find('=');
        const bool isLong = StartsWith(word, "--");
        // Flags with one letter may stand together, and the value of the last one next to it.
        const std::size_t count = isLong ? 1 : word.size() - 1;
        for (std::size_t i = 0; i < count; ++i)
        {
            const OptionUsage* const option =
                Find(isLong ? word.substr(0, equals) : std::string("-") + word[i + 1]);
            if (option == nullptr)
            {
                return;
            }
            m_used.insert(option);
            if (!option->value.empty())
            {
                const bool hasValue = isLong ? equals != std::string::npos : i + 1 < count;
                m_pending = hasValue ? nullptr : option;
                return;
            }
        }
    }

    void ReadCommand(const std::string& word)
    {
        const auto found = std::find_if(m_command->commands.begin(), m_command->commands.end(),
                                        [&](const CommandUsage& command) { return command.Name() == word; });
        m_isKnown = m_isKnown && found != m_command->commands.end();
        if (m_isKnown)
        {
            m_command = &*found;
            m_used.clear();
        }
    }

    const OptionUsage* NextArgument() const
    {
        const std::vector<OptionUsage>& arguments = m_command->arguments;
        if (m_given.size() < arguments.size())
        {
            return &arguments[m_given.size()];
        }
        return !arguments.empty() && arguments.back().isRepeatable ? &arguments.back() : nullptr;
    }

    Completion Options(const std::string& word) const
    {
        Completion completion;
        for (const OptionUsage& option : m_command->options)
        {
            for (const std::string& name : option.names)
            {
                const bool isOver = m_used.count(&option) != 0 && !option.isRepeatable;
                if (!isOver && StartsWith(name, word))
                {
                    completion.candidates.push_back({name, Brief(option.help)});
                }
            }
        }
        return completion;
    }

    Completion Commands(const std::string& word) const
    {
        Completion completion;
        for (const CommandUsage& command : m_command->commands)
        {
            if (StartsWith(command.Name(), word))
            {
                completion.candidates.push_back({command.Name(), Brief(command.help)});
            }
        }
        return completion;
    }

    Completion Values(const OptionUsage& option, const std::string& word, const ValuesOf& valuesOf) const
    {
        const KnownValues known = option.choices.empty() ? valuesOf(*m_command, option, m_given, word)
                                                         : KnownValues{false, option.choices};
        std::string before;
        const std::size_t last = option.delimiter == '\0' ? std::string::npos : word.rfind(option.delimiter);
        if (last != std::string::npos)
        {
            before = word.substr(0, last + 1);
        }
        Completion completion;
        completion.files = known.files;
        for (const std::string& name : known.names)
        {
            if (StartsWith(before + name, word) && !HasControls(name))
            {
                completion.candidates.push_back({before + name});
            }
        }
        return completion;
    }

    const CommandUsage* m_command;
    bool m_isKnown = true;
    bool m_onlyArguments = false;
    const OptionUsage* m_pending = nullptr; ///< the option whose value comes next
    std::set<const OptionUsage*> m_used;
    std::vector<std::string> m_given; ///< the arguments so far
};

} // namespace

Completion CompleteWord(const CommandUsage& program, const std::vector<std::string>& words,
                        const ValuesOf& valuesOf)
{
    TypedLine line(program);
    if (words.empty())
    {
        return line.Complete("", valuesOf);
    }
    std::for_each(words.begin(), words.end() - 1, [&line](const std::string& word) { line.Read(word); });
    return line.Complete(words.back(), valuesOf);
}

} // namespace Zelnor::Tool
