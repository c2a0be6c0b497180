#include "hxdcheck/file/ElfFile.h"

#include "common/File.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned char OWN_BYTE_ORDER =
    __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? ELFDATA2LSB : ELFDATA2MSB;

// A file's content in memory that is not the process's own: libraries may be larger than what a
// small panel has to spare.
class MappedFile {
public:
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    explicit MappedFile(const std::string& path) {
        HXDCTRL::File file;
        struct stat status = {};
        if (!file.open(path, O_RDONLY | O_NONBLOCK) || ::fstat(file.Descriptor(), &status) != 0) {
            m_nErrno = file.LastError();
            return;
        }
        const std::size_t size = static_cast<std::size_t>(status.st_size);
        void* const data = S_ISREG(status.st_mode) && size > 0
                               ? ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.Descriptor(), 0)
                               : MAP_FAILED;
        if (data == MAP_FAILED)
            return;
        m_pData = static_cast<const char*>(data);
        m_nSize = size;
    }
    ~MappedFile() {
        if (m_nSize > 0)
            ::munmap(const_cast<char*>(m_pData), m_nSize);
    }

    int Error() const { return m_nErrno; }
    const char* Data() const { return m_pData; }
    std::size_t Size() const { return m_nSize; }

    std::string Text(unsigned long long offset) const {
        if (offset >= m_nSize)
            return "";
        const char* const end = std::find(m_pData + offset, m_pData + m_nSize, '\0');
        return std::string(m_pData + offset, end);
    }

private:
    int m_nErrno = 0;
    const char* m_pData = nullptr;
    std::size_t m_nSize = 0;
};

// The text by which the driver tells its version, wherever in the file it lies.
std::string VersionText(const MappedFile& content) {
    static const char mark[] = "@(#) ";
    const char* const end = content.Data() + content.Size();
    const char* const found = std::search(content.Data(), end, mark, mark + sizeof mark - 1);
    return found == end
               ? ""
               : content.Text(static_cast<std::size_t>(found - content.Data()) + sizeof mark - 1);
}

struct Types32 {
    using Header = Elf32_Ehdr;
    using Section = Elf32_Shdr;
    using Segment = Elf32_Phdr;
    using Entry = Elf32_Dyn;
    using Symbol = Elf32_Sym;
};
struct Types64 {
    using Header = Elf64_Ehdr;
    using Section = Elf64_Shdr;
    using Segment = Elf64_Phdr;
    using Entry = Elf64_Dyn;
    using Symbol = Elf64_Sym;
};

template <class TYPES>
class Parser {
    using Section = typename TYPES::Section;
    using Offset = unsigned long long;

public:
    Parser(const MappedFile& content, ElfFile& file)
        : m_content(content), m_file(file), m_header(At<typename TYPES::Header>(0)) {}

    bool Run() {
        m_file.machine = m_header.e_machine;
        m_file.flags = m_header.e_flags;
        for (unsigned i = 0; i < m_header.e_phnum; ++i) {
            const auto segment =
                At<typename TYPES::Segment>(m_header.e_phoff + i * sizeof(typename TYPES::Segment));
            if (segment.p_type == PT_INTERP)
                m_file.interpreter = Text(segment.p_offset);
        }
        for (unsigned i = 0; i < m_header.e_shnum; ++i)
            ReadSection(SectionAt(i));
        const Offset end = m_header.e_shoff + Offset(m_header.e_shnum) * sizeof(Section);
        return m_header.e_shnum > 0 && end <= m_content.Size();
    }

private:
    // Zeros where the file is too short.
    template <class T>
    T At(Offset offset) const {
        T value = {};
        if (offset <= m_content.Size() && m_content.Size() - offset >= sizeof value)
            std::memcpy(&value, m_content.Data() + offset, sizeof value);
        return value;
    }

    std::string Text(Offset offset) const { return m_content.Text(offset); }

    Section SectionAt(unsigned index) const {
        return At<Section>(m_header.e_shoff + Offset(index) * sizeof(Section));
    }

    // Elements of a section that the file really holds.
    template <class T>
    Offset Count(const Section& section) const {
        const Offset size = m_content.Size();
        const Offset left = section.sh_offset < size ? size - section.sh_offset : 0;
        return std::min<Offset>(section.sh_size, left) / sizeof(T);
    }

    void ReadSection(const Section& section) {
        const Offset texts = SectionAt(section.sh_link).sh_offset;
        switch (section.sh_type) {
            case SHT_DYNAMIC:
                return ReadDynamic(section, texts);
            case SHT_DYNSYM:
                return ReadSymbols(section, texts);
            case SHT_GNU_verneed:
                return ReadVersionNeeds(section, texts);
            case SHT_GNU_verdef:
                return ReadVersions(section, texts);
            default:
                return;
        }
    }

    void ReadDynamic(const Section& section, Offset texts) {
        using Entry = typename TYPES::Entry;
        for (Offset i = 0; i < Count<Entry>(section); ++i) {
            const Entry entry = At<Entry>(section.sh_offset + i * sizeof(Entry));
            if (entry.d_tag == DT_NULL)
                return;
            const std::string text = Text(texts + entry.d_un.d_val);
            if (entry.d_tag == DT_NEEDED)
                m_file.needed.push_back(text);
            else if (entry.d_tag == DT_SONAME)
                m_file.soname = text;
            else if (entry.d_tag == DT_RUNPATH || entry.d_tag == DT_RPATH)
                m_file.searchPath = text;
        }
    }

    void ReadSymbols(const Section& section, Offset texts) {
        using Symbol = typename TYPES::Symbol;
        for (Offset i = 0; i < Count<Symbol>(section); ++i) {
            const Symbol symbol = At<Symbol>(section.sh_offset + i * sizeof(Symbol));
            const unsigned binding = symbol.st_info >> 4;
            if (symbol.st_name == 0 || binding == STB_LOCAL)
                continue;
            if (symbol.st_shndx != SHN_UNDEF)
                m_file.defined.insert(Text(texts + symbol.st_name));
            else if (binding == STB_GLOBAL)
                m_file.undefined.insert(Text(texts + symbol.st_name));
        }
    }

    // The version records have one layout for 32 and 64 bits; each tells where the next one is.
    void ReadVersionNeeds(const Section& section, Offset texts) {
        Offset offset = section.sh_offset;
        for (unsigned i = 0; i < section.sh_info; ++i) {
            const auto need = At<Elf32_Verneed>(offset);
            Offset next = offset + need.vn_aux;
            for (unsigned j = 0; j < need.vn_cnt; ++j) {
                const auto version = At<Elf32_Vernaux>(next);
                if ((version.vna_flags & VER_FLG_WEAK) == 0)
                    m_file.versionNeeds.push_back(
                        {Text(texts + need.vn_file), Text(texts + version.vna_name)});
                if (version.vna_next == 0)
                    break;
                next += version.vna_next;
            }
            if (need.vn_next == 0)
                return;
            offset += need.vn_next;
        }
    }

    void ReadVersions(const Section& section, Offset texts) {
        Offset offset = section.sh_offset;
        for (unsigned i = 0; i < section.sh_info; ++i) {
            const auto version = At<Elf32_Verdef>(offset);
            m_file.versions.insert(
                Text(texts + At<Elf32_Verdaux>(offset + version.vd_aux).vda_name));
            if (version.vd_next == 0)
                return;
            offset += version.vd_next;
        }
    }

    const MappedFile& m_content;
    ElfFile& m_file;
    const typename TYPES::Header m_header;
};

const char* MachineName(unsigned machine) {
    switch (machine) {
        case EM_ARM:
            return "ARM";
        case EM_AARCH64:
            return "ARM64";
        case EM_386:
            return "x86";
        case EM_X86_64:
            return "x86-64";
        default:
            return "another processor";
    }
}

}  // namespace

bool ElfFile::Read(const std::string& file, std::string& error) {
    path = file;
    const MappedFile content(file);
    if (content.Error() != 0) {
        error = std::strerror(content.Error());
        return false;
    }
    if (content.Size() < EI_NIDENT || std::memcmp(content.Data(), ELFMAG, SELFMAG) != 0) {
        error = "is no program or library (no ELF file)";
        return false;
    }
    if (static_cast<unsigned char>(content.Data()[EI_DATA]) != OWN_BYTE_ORDER) {
        error = "is for a processor with another byte order";
        return false;
    }
    version = VersionText(content);
    bits = content.Data()[EI_CLASS] == ELFCLASS64 ? 64 : 32;
    error = "has no section table (cut short, or stripped of it)";
    return bits == 64 ? Parser<Types64>(content, *this).Run()
                      : Parser<Types32>(content, *this).Run();
}

bool ElfFile::SameProcessor(const ElfFile& other) const {
    const unsigned floats = EF_ARM_ABI_FLOAT_HARD | EF_ARM_ABI_FLOAT_SOFT;
    const unsigned mine = flags & floats;
    const unsigned theirs = other.flags & floats;
    // Libraries of some compilers do not say which they are.
    const bool sameFloats = machine != EM_ARM || mine == 0 || theirs == 0 || mine == theirs;
    return machine == other.machine && bits == other.bits && sameFloats;
}

std::string ElfFile::Processor() const {
    std::string text = MachineName(machine);
    if (machine == EM_ARM && (flags & EF_ARM_ABI_FLOAT_HARD) != 0)
        text += ", hard float";
    if (machine == EM_ARM && (flags & EF_ARM_ABI_FLOAT_SOFT) != 0)
        text += ", soft float";
    return text;
}
