#include "host/trace/TraceCall.h"

#include "onlinehost/Text.h"

#include <algorithm>
#include <string_view>

namespace host
{

namespace
{

struct ToText
{
    std::string operator()(bool value) const
    {
        return value ? "true" : "false";
    }
    std::string operator()(int64_t value) const
    {
        return std::to_string(value);
    }
    std::string operator()(const std::string& value) const
    {
        return value;
    }
    std::string operator()(const TraceCode& value) const
    {
        return value.text;
    }
    std::string operator()(const TraceList& value) const
    {
        std::string text = std::to_string(value.size);
        const char* separator = ": ";
        for (const std::string& id : value.first)
        {
            text += separator + id;
            separator = ", ";
        }
        return value.size > value.first.size() ? text + ", ..." : text;
    }
};

} // namespace

const TraceValue* FindValue(const TraceArguments& arguments, const char* name)
{
    const auto found = std::find_if(arguments.begin(), arguments.end(),
                                    [name](const TraceArgument& each) { return std::string_view(each.name) == name; });
    return found != arguments.end() ? &found->value : nullptr;
}

std::string ValueText(const TraceValue& value)
{
    return std::visit(ToText{}, value);
}

std::string Shorten(const std::string& text, size_t limit)
{
    const std::string shown = onlinehost::Printable(text);
    return shown.size() <= limit ? shown : shown.substr(0, onlinehost::CutLength(shown, limit)) + "...";
}

} // namespace host
