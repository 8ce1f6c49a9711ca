#include "onlinehost/ElfFile.h"

#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <fstream>
#include <string_view>

namespace onlinehost
{

namespace
{

constexpr uintmax_t kLargestFile = uintmax_t{1} << 30;

std::vector<char> ReadWhole(const std::filesystem::path& path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status))
    {
        throw Error(error && status.type() != std::filesystem::file_type::not_found ? error.message() : "no such file");
    }
    if (!std::filesystem::is_regular_file(status))
    {
        throw Error(std::filesystem::is_directory(status) ? "is a directory" : "is not a regular file");
    }
    const uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size > kLargestFile)
    {
        throw Error(error ? error.message() : "is too large for a module");
    }
    std::vector<char> bytes(size);
    std::ifstream file(path, std::ios::binary);
    if (!file || !file.read(bytes.data(), static_cast<std::streamsize>(size)))
    {
        throw Error("cannot be read");
    }
    return bytes;
}

/// The bytes of a file, of which nothing is believed: every read is checked against the end.
class ElfFile
{
public:
    explicit ElfFile(const std::filesystem::path& path) : m_bytes(ReadWhole(path))
    {
        CheckHeader();
        CheckSegments();
    }

    std::vector<std::string> ExportedFunctions() const
    {
        const std::vector<Elf64_Shdr> sections = ReadTable<Elf64_Shdr>(m_header.e_shoff, m_header.e_shnum);
        const auto table = std::find_if(sections.begin(), sections.end(),
                                        [](const Elf64_Shdr& section) { return section.sh_type == SHT_DYNSYM; });
        if (table == sections.end() || table->sh_entsize != sizeof(Elf64_Sym) || table->sh_link >= sections.size())
        {
            throw Error("has no table of dynamic symbols");
        }
        const Elf64_Shdr& namesSection = sections[table->sh_link];
        const std::string_view names = Range(namesSection.sh_offset, namesSection.sh_size);

        std::vector<std::string> functions;
        for (const Elf64_Sym& symbol : ReadTable<Elf64_Sym>(table->sh_offset, table->sh_size / sizeof(Elf64_Sym)))
        {
            if (IsExportedFunction(symbol))
            {
                functions.push_back(ReadName(names, symbol.st_name));
            }
        }
        std::sort(functions.begin(), functions.end());
        functions.erase(std::unique(functions.begin(), functions.end()), functions.end());
        return functions;
    }

private:
    static bool IsExportedFunction(const Elf64_Sym& symbol)
    {
        const auto type = ELF64_ST_TYPE(symbol.st_info);
        const auto binding = ELF64_ST_BIND(symbol.st_info);
        const auto visibility = ELF64_ST_VISIBILITY(symbol.st_other);
        return symbol.st_shndx != SHN_UNDEF && (type == STT_FUNC || type == STT_GNU_IFUNC) &&
               (binding == STB_GLOBAL || binding == STB_WEAK) &&
               (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
    }

    static std::string ReadName(std::string_view names, size_t offset)
    {
        const size_t end = offset < names.size() ? names.find('\0', offset) : std::string_view::npos;
        if (end == std::string_view::npos)
        {
            throw Error("has a symbol whose name lies outside its table of names");
        }
        return std::string(names.substr(offset, end - offset));
    }

    void CheckHeader()
    {
        const size_t magicSize = std::min<size_t>(m_bytes.size(), SELFMAG);
        if (magicSize < SELFMAG || std::memcmp(m_bytes.data(), ELFMAG, SELFMAG) != 0)
        {
            throw Error("is not a shared object");
        }
        m_header = Read<Elf64_Ehdr>(0);
        if (m_header.e_ident[EI_CLASS] != ELFCLASS64 || m_header.e_ident[EI_DATA] != ELFDATA2LSB ||
            m_header.e_machine != EM_X86_64)
        {
            throw Error("is not for x86-64");
        }
        if (m_header.e_type != ET_DYN)
        {
            throw Error("is not a shared object");
        }
    }

    /// A part that the file does not have would be mapped all the same, and end the process at its first use.
    void CheckSegments() const
    {
        if (m_header.e_phentsize != sizeof(Elf64_Phdr) || m_header.e_shentsize != sizeof(Elf64_Shdr))
        {
            throw Error("is not a shared object: its tables have entries of a strange size");
        }
        for (const Elf64_Phdr& segment : ReadTable<Elf64_Phdr>(m_header.e_phoff, m_header.e_phnum))
        {
            if (segment.p_type == PT_LOAD || segment.p_type == PT_DYNAMIC)
            {
                Range(segment.p_offset, segment.p_filesz);
            }
        }
    }

    std::string_view Range(uint64_t offset, uint64_t size) const
    {
        if (offset > m_bytes.size() || size > m_bytes.size() - offset)
        {
            throw Error("is cut short: a part of it lies behind its end");
        }
        return {m_bytes.data() + offset, size};
    }

    template <typename T>
    T Read(uint64_t offset) const
    {
        T value;
        std::memcpy(&value, Range(offset, sizeof(T)).data(), sizeof(T));
        return value;
    }

    template <typename T>
    std::vector<T> ReadTable(uint64_t offset, uint64_t count) const
    {
        if (count > m_bytes.size() / sizeof(T))
        {
            throw Error("is cut short: a table lies behind its end");
        }
        const std::string_view bytes = Range(offset, count * sizeof(T));
        std::vector<T> table(count);
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(table.data()));
        return table;
    }

    std::vector<char> m_bytes;
    Elf64_Ehdr m_header{};
};

} // namespace

std::vector<std::string> ReadExportedFunctions(const std::filesystem::path& path)
{
    try
    {
        return ElfFile(path).ExportedFunctions();
    }
    catch (const Error& error)
    {
        throw Error(Printable(path.string()) + ": " + error.what());
    }
}

} // namespace onlinehost
