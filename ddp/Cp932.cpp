#include "ddp/CdTextReader.h"

#include <cerrno>
#include <iconv.h>

// glibc's "CP932" is Microsoft's code page 932: Shift-JIS with the NEC and
// IBM extensions that Japanese CD-Text carries (plain "SHIFT_JIS" lacks them).
std::string CdTextReader::cp932ToUtf8(std::string_view text)
{
    if (text.empty())
        return std::string();
    iconv_t cd = iconv_open("UTF-8", "CP932");
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::string();
    std::string in(text);
    std::string out(text.size() * 4 + 4, '\0');
    char* inPtr = in.data();
    std::size_t inLeft = in.size();
    char* outPtr = out.data();
    std::size_t outLeft = out.size();
    const std::size_t converted = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    const bool flushed =
        iconv(cd, nullptr, nullptr, &outPtr, &outLeft) != static_cast<std::size_t>(-1);
    iconv_close(cd);
    if (converted == static_cast<std::size_t>(-1) || !flushed || inLeft != 0)
        return std::string();
    out.resize(out.size() - outLeft);
    return out;
}
