#include "Commands.h"

#include "KVProjectData/KVProjectData.h"
#include "platform/com/TaskMemory.h"

#include <algorithm>

namespace kvproject {

std::string CommandName(LONG command)
{
    const auto& names = kv::kEnumDescription<DiscCommand>.values;
    const auto found = std::ranges::find(names, command, &kv::EnumeratorDescription::value);
    return found == names.end() ? std::to_string(command) : std::string(found->name);
}

bool IsCommandName(std::string_view name)
{
    const auto& names = kv::kEnumDescription<DiscCommand>.values;
    return std::ranges::find(names, name, &kv::EnumeratorDescription::name) != names.end();
}

std::vector<std::string> CommandNames()
{
    std::vector<std::string> names;
    for (const auto& command : kv::kEnumDescription<DiscCommand>.values)
        names.emplace_back(command.name);
    return names;
}

std::vector<Command> CommandsOf(IUnknown* owner)
{
    std::vector<Command> commands;
    const auto list = kv::Query<IKVCommandList>(owner);
    LONG count = 0;
    DiscCommandParams* records = nullptr;
    if (!list || FAILED(list->GetCommandList(&count, &records))) return commands;
    const kv::UniqueTaskMem<DiscCommandParams> owned(records);
    for (LONG i = 0; i < count; ++i) {
        const auto xml = kv::ComPtr<IXMLDOMNode>::Attach(records[i].pXMLData);
        Command command{CommandName(records[i].cmd), records[i].lParam1, records[i].lParam2, std::nullopt};
        kv::Bstr text;
        if (xml && SUCCEEDED(xml->get_xml(text.Put()))) command.xml = kv::ToUtf8(text.View());
        commands.push_back(std::move(command));
    }
    return commands;
}

} // namespace kvproject
