#include "checks/SharedObject.h"

#include <elf.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace checks
{

namespace
{

class Reader
{
public:
    explicit Reader(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        m_bytes = std::move(bytes).str();
        if (m_bytes.size() < sizeof(Elf64_Ehdr) || std::memcmp(m_bytes.data(), ELFMAG, SELFMAG) != 0 ||
            m_bytes[EI_CLASS] != ELFCLASS64)
        {
            throw std::runtime_error(path + " is no 64-bit ELF file");
        }
    }

    template <typename Record>
    std::vector<Record> Table(uint64_t offset, uint64_t count) const
    {
        std::vector<Record> table(count);
        if (offset > m_bytes.size() || count > (m_bytes.size() - offset) / sizeof(Record))
        {
            throw std::runtime_error("the ELF file is cut short");
        }
        std::memcpy(table.data(), m_bytes.data() + offset, count * sizeof(Record));
        return table;
    }

    std::string Text(uint64_t offset) const
    {
        const size_t end = m_bytes.find('\0', offset);
        if (end == std::string::npos)
        {
            throw std::runtime_error("the ELF file is cut short");
        }
        return m_bytes.substr(offset, end - offset);
    }

private:
    std::string m_bytes;
};

} // namespace

SharedObject::SharedObject(const std::string& path)
{
    const Reader reader(path);
    const auto header = reader.Table<Elf64_Ehdr>(0, 1).front();
    for (const auto& segment : reader.Table<Elf64_Phdr>(header.e_phoff, header.e_phnum))
    {
        hasRelro = hasRelro || segment.p_type == PT_GNU_RELRO;
    }

    const auto sections = reader.Table<Elf64_Shdr>(header.e_shoff, header.e_shnum);
    for (const Elf64_Shdr& section : sections)
    {
        if (section.sh_type != SHT_DYNAMIC && section.sh_type != SHT_DYNSYM)
        {
            continue;
        }
        const uint64_t texts = sections.at(section.sh_link).sh_offset;
        if (section.sh_type == SHT_DYNSYM)
        {
            for (const auto& symbol : reader.Table<Elf64_Sym>(section.sh_offset, section.sh_size / sizeof(Elf64_Sym)))
            {
                const bool isLocal = ELF64_ST_BIND(symbol.st_info) == STB_LOCAL;
                if (!isLocal && symbol.st_name != 0)
                {
                    (symbol.st_shndx == SHN_UNDEF ? undefined : exported).insert(reader.Text(texts + symbol.st_name));
                }
            }
            continue;
        }
        for (const auto& entry : reader.Table<Elf64_Dyn>(section.sh_offset, section.sh_size / sizeof(Elf64_Dyn)))
        {
            if (entry.d_tag == DT_NEEDED)
            {
                needed.insert(reader.Text(texts + entry.d_un.d_val));
            }
            if (entry.d_tag == DT_FLAGS_1)
            {
                isBoundAtLoad = (entry.d_un.d_val & DF_1_NOW) != 0;
                staysLoaded = (entry.d_un.d_val & DF_1_NODELETE) != 0;
            }
        }
    }
}

} // namespace checks
