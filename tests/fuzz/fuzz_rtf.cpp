// A fuzzer of the RTF reader. Whatever comes in: no crash, no hang, no unbounded memory, and what
// is written from what was read reads the same again.

#include "platform/richtext/Rtf.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qb;
    const QString rtf = QString::fromLatin1("{\\rtf1 ")
                        + QString::fromLatin1(reinterpret_cast<const char*>(data), qsizetype(size));
    RichTextDocument first;
    ReadRtf(rtf, first);
    const QString written = WriteRtf(first);
    RichTextDocument second;
    ReadRtf(written, second);
    if (second.Text() != first.Text() || WriteRtf(second) != written)
        std::abort();
    return 0;
}
