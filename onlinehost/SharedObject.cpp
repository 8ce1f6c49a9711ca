#include "onlinehost/SharedObject.h"

#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <fstream>
#include <string_view>
#include <vector>

namespace onlinehost
{

namespace
{

constexpr uintmax_t kLargestFile = uintmax_t{1} << 30;

/// Throws `Error` for a file whose first bytes are not those of a shared object for x86-64.
void CheckHeader(std::string_view bytes)
{
    if (!bytes.starts_with(std::string_view(ELFMAG, SELFMAG)))
    {
        throw Error("is not a shared object");
    }
    if (bytes.size() < sizeof(Elf64_Ehdr))
    {
        throw Error("is cut short: a part lies behind the end of the file");
    }
    Elf64_Ehdr header;
    std::memcpy(&header, bytes.data(), sizeof(header));
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB ||
        header.e_machine != EM_X86_64)
    {
        throw Error("is not for x86-64");
    }
    if (header.e_type != ET_DYN)
    {
        throw Error("is not a shared object");
    }
    if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_shentsize != sizeof(Elf64_Shdr))
    {
        throw Error("is not a shared object: the entries of its tables have an unexpected size");
    }
}

void Read(std::ifstream& file, std::vector<char>& bytes, size_t size)
{
    const size_t present = bytes.size();
    bytes.resize(size);
    if (!file.read(bytes.data() + present, static_cast<std::streamsize>(size - present)))
    {
        throw Error("cannot be read");
    }
}

/// Reads the header first, so that the memory of a large file is spent on a shared object only.
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
    if (error)
    {
        throw Error(error.message());
    }
    std::vector<char> bytes;
    std::ifstream file(path, std::ios::binary);
    Read(file, bytes, std::min<uintmax_t>(size, sizeof(Elf64_Ehdr)));
    CheckHeader({bytes.data(), bytes.size()});
    if (size > kLargestFile)
    {
        throw Error("is too large for a module");
    }
    Read(file, bytes, size);
    return bytes;
}

bool IsExported(const Elf64_Sym& symbol)
{
    const auto visibility = ELF64_ST_VISIBILITY(symbol.st_other);
    return symbol.st_shndx != SHN_UNDEF && (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

bool IsFunction(const Elf64_Sym& symbol)
{
    const auto type = ELF64_ST_TYPE(symbol.st_info);
    return type == STT_FUNC || type == STT_GNU_IFUNC;
}

/// The bytes of a file that may be damaged: every read is checked against the end of the file.
class ElfReader
{
public:
    explicit ElfReader(const std::filesystem::path& path)
        : m_bytes(ReadWhole(path)),
          m_header(ReadValue<Elf64_Ehdr>(0)),
          m_sections(ReadTable<Elf64_Shdr>(m_header.e_shoff, m_header.e_shnum))
    {
    }

    std::vector<Elf64_Phdr> Segments() const
    {
        auto segments = ReadTable<Elf64_Phdr>(m_header.e_phoff, m_header.e_phnum);
        for (const Elf64_Phdr& segment : segments)
        {
            // The system maps a segment that lies behind the end of the file too, and its first use ends the process.
            if (segment.p_type == PT_LOAD || segment.p_type == PT_DYNAMIC)
            {
                Range(segment.p_offset, segment.p_filesz);
            }
        }
        return segments;
    }

    /// The first section of a type that is a table of `Entry`; `what` names the table in the error.
    template <typename Entry>
    std::vector<Entry> Table(Elf64_Word type, const char* what) const
    {
        const Elf64_Shdr& section = Section(type, what);
        if (section.sh_entsize != sizeof(Entry))
        {
            throw Error(std::string("has no table of ") + what);
        }
        return ReadTable<Entry>(section.sh_offset, section.sh_size / sizeof(Entry));
    }

    /// The text at `offset` of the section of texts that belongs to the first section of a type.
    std::string Text(Elf64_Word type, const char* what, uint64_t offset) const
    {
        const Elf64_Word link = Section(type, what).sh_link;
        if (link >= m_sections.size())
        {
            throw Error(std::string("has no texts for its table of ") + what);
        }
        const std::string_view texts = Range(m_sections[link].sh_offset, m_sections[link].sh_size);
        const size_t end = offset < texts.size() ? texts.find('\0', offset) : std::string_view::npos;
        if (end == std::string_view::npos)
        {
            throw Error(std::string("has an entry in its table of ") + what + " whose text lies outside its texts");
        }
        return std::string(texts.substr(offset, end - offset));
    }

private:
    const Elf64_Shdr& Section(Elf64_Word type, const char* what) const
    {
        const auto found = std::find_if(m_sections.begin(), m_sections.end(),
                                        [type](const Elf64_Shdr& section) { return section.sh_type == type; });
        if (found == m_sections.end())
        {
            throw Error(std::string("has no table of ") + what);
        }
        return *found;
    }

    std::string_view Range(uint64_t offset, uint64_t size) const
    {
        if (offset > m_bytes.size() || size > m_bytes.size() - offset)
        {
            throw Error("is cut short: a part lies behind the end of the file");
        }
        return {m_bytes.data() + offset, size};
    }

    template <typename T>
    T ReadValue(uint64_t offset) const
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
            throw Error("is cut short: a table lies behind the end of the file");
        }
        const std::string_view bytes = Range(offset, count * sizeof(T));
        std::vector<T> table(count);
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(table.data()));
        return table;
    }

    const std::vector<char> m_bytes;
    const Elf64_Ehdr m_header;
    const std::vector<Elf64_Shdr> m_sections;
};

} // namespace

SharedObject::SharedObject(const std::filesystem::path& path)
try
{
    static constexpr const char* kSymbols = "dynamic symbols";
    static constexpr const char* kEntries = "dynamic entries";

    const ElfReader file(path);
    for (const Elf64_Phdr& segment : file.Segments())
    {
        hasRelro = hasRelro || segment.p_type == PT_GNU_RELRO;
    }
    for (const auto& symbol : file.Table<Elf64_Sym>(SHT_DYNSYM, kSymbols))
    {
        if (symbol.st_name == 0 || ELF64_ST_BIND(symbol.st_info) == STB_LOCAL)
        {
            continue;
        }
        const std::string name = file.Text(SHT_DYNSYM, kSymbols, symbol.st_name);
        if (symbol.st_shndx == SHN_UNDEF)
        {
            undefined.insert(name);
        }
        if (IsExported(symbol))
        {
            exported.insert(name);
        }
        if (IsExported(symbol) && IsFunction(symbol))
        {
            functions.insert(name);
        }
    }
    for (const auto& entry : file.Table<Elf64_Dyn>(SHT_DYNAMIC, kEntries))
    {
        if (entry.d_tag == DT_NEEDED)
        {
            needed.insert(file.Text(SHT_DYNAMIC, kEntries, entry.d_un.d_val));
        }
        if (entry.d_tag == DT_FLAGS_1)
        {
            isBoundAtLoad = (entry.d_un.d_val & DF_1_NOW) != 0;
            staysLoaded = (entry.d_un.d_val & DF_1_NODELETE) != 0;
        }
    }
}
catch (const Error& error)
{
    throw Error(Printable(path.string()) + ": " + error.what());
}

} // namespace onlinehost
