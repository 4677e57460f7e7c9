#include "tickets/RichText.h"

#include <cstdlib>

/// What is accepted must come back unchanged, and without losses, from what is written of it.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArrayView file(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto read = richtext::Read(file);
    if (static_cast<bool>(read) != read.Error().isEmpty())
        std::abort();
    if (!read)
        return 0;
    const auto again = richtext::Read(richtext::Write(read->document));
    if (!again || !again->losses.isEmpty() || !(again->document == read->document))
        std::abort();
    return 0;
}
