#include "host/app/command_inspect.h"

#include "host/console/Console.h"
#include "host/console/ExitCode.h"
#include "onlinehost/Module.h"
#include "onlinehost/Text.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

namespace host
{

using namespace onlinehost;

namespace
{

struct Options
{
    std::string module;
    bool json = false;
};

std::string IdText(const std::optional<GUID>& id)
{
    return id ? GuidText(*id) : "none";
}

void PrintText(const Module& module)
{
    const Console out(stdout);
    const Module::Info info = module.GetInfo();
    out.Line(out.Paint(Tone::Strong, Printable(module.Path().string())));
    out.Line("Info values: " + HexText(info.info1) + " " + std::to_string(info.info2) + " " +
             std::to_string(info.info3));

    const std::vector<Module::ComponentInfo> components = module.GetComponents();
    out.Line("Components: " + std::to_string(components.size()));
    for (const Module::ComponentInfo& component : components)
    {
        out.Line("  " + out.Paint(Tone::Strong, Printable(component.name)));
        out.Line("    class    " + IdText(component.classId));
        out.Line("    category " + IdText(component.categoryId));
    }

    out.Line("Exported functions: " + std::to_string(module.ExportedFunctions().size()));
    for (const std::string& function : module.ExportedFunctions())
    {
        out.Line("  " + Printable(function));
    }
}

class JsonWriter : public rapidjson::PrettyWriter<rapidjson::StringBuffer>
{
public:
    using PrettyWriter::PrettyWriter;

    void Text(const std::string& text)
    {
        const std::string printable = Printable(text);
        String(printable.c_str(), static_cast<rapidjson::SizeType>(printable.size()));
    }

    void Id(const std::optional<GUID>& id)
    {
        if (id)
        {
            Text(GuidText(*id));
        }
        else
        {
            Null();
        }
    }
};

void PrintJson(const Module& module)
{
    rapidjson::StringBuffer buffer;
    JsonWriter json(buffer);
    json.SetIndent(' ', 2);
    json.StartObject();
    json.Key("path");
    json.Text(module.Path().string());

    json.Key("info");
    const Module::Info info = module.GetInfo();
    json.StartArray();
    json.Uint(info.info1);
    json.Uint(info.info2);
    json.Uint(info.info3);
    json.EndArray();

    json.Key("components");
    json.StartArray();
    for (const Module::ComponentInfo& component : module.GetComponents())
    {
        json.StartObject();
        json.Key("name");
        json.Text(component.name);
        json.Key("class");
        json.Id(component.classId);
        json.Key("category");
        json.Id(component.categoryId);
        json.EndObject();
    }
    json.EndArray();

    json.Key("exports");
    json.StartArray();
    for (const std::string& function : module.ExportedFunctions())
    {
        json.Text(function);
    }
    json.EndArray();
    json.EndObject();

    Console(stdout).Line({buffer.GetString(), buffer.GetSize()});
}

} // namespace

void AddInspectCommand(CLI::App& program, int& exitCode)
{
    CLI::App* const command = program.add_subcommand("inspect", "Show the components and exports of a module file");
    const auto options = std::make_shared<Options>();
    command->add_option("MODULE", options->module, "The module's file")->type_name("FILE")->required();
    command->add_flag("--json", options->json, "Write JSON instead of text");
    command->footer(std::string("The module is loaded, so its code runs; no component is created.\n") + kExitCodeHelp);
    command->callback(
        [options, &exitCode]
        {
            const Module module(options->module);
            (options->json ? PrintJson : PrintText)(module);
            exitCode = EXIT_DONE;
        });
}

} // namespace host
