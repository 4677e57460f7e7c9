#include "tickets/VniTable.h"

#include <cstdlib>

namespace {

constexpr qsizetype FileLength = VniTable::Records * VniTable::RecordLength;

QByteArrayView Record(QByteArrayView file, int index) {
    return file.sliced(index * VniTable::RecordLength, VniTable::RecordLength);
}

QByteArrayView Key(QByteArrayView record) {
    return record[0] == 0 ? record.sliced(1, 1) : record.first(2);
}

quint8 Columns(QByteArrayView record) {
    return static_cast<quint8>(record[2]);
}

/// A table in which every letter has the key "a".
const VniTable& Loaded() {
    static const VniTable table = [] {
        VniTable made;
        if (!made.TakeRecords(
                QByteArray("\0a\1\xFF\0\0\0\0\0\0\0", VniTable::RecordLength).repeated(VniTable::Records)))
            std::abort();
        return made;
    }();
    return table;
}

bool IsSound(QByteArrayView file) {
    if (file.size() != FileLength)
        return false;
    for (int i = 0; i < VniTable::Records; ++i) {
        if (Columns(Record(file, i)) > 8)
            return false;
    }
    return true;
}

} // namespace

/// The first byte chooses whether the rest is a letter file, or the records that one repeats to its end. What is taken
/// gives each letter back, by the first record of its key; what is refused leaves nothing, of what was there before
/// neither.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    QByteArray file(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    if (data[0] != 0)
        file = file.repeated(FileLength / file.size() + 1).first(FileLength);

    VniTable table = Loaded();
    const Result<> taken = table.TakeRecords(file);
    if (static_cast<bool>(taken) != IsSound(file) || table.IsLoaded() != IsSound(file))
        std::abort();
    if (!taken) {
        const bool isEmpty = table.FindVNI("a") == -1 && table.RecordBytes(0, VniTable::Records).isEmpty();
        if (!isEmpty || taken.Error().isEmpty())
            std::abort();
        return 0;
    }
    if (table.RecordBytes(0, VniTable::Records) != file || table.FindVNI({}) != -1)
        std::abort();
    for (int i = 0; i < VniTable::Records; ++i) {
        const QByteArrayView record = Record(file, i);
        // That it is not behind any record with its key makes it the first.
        const int found = table.FindVNI(Key(record));
        if (found < 0 || found > i || Key(Record(file, found)) != Key(record))
            std::abort();
        const QByteArray image = table.Image(i);
        if (image.size() != 5 + Columns(record) || !image.startsWith(QByteArrayView("\x1B*\0", 3)) ||
            image[3] != record[2] || image[4] != 0 || image.sliced(5) != record.sliced(3, Columns(record)))
            std::abort();
        const QByteArray character = VniTable::PageCharacter(found);
        if (character.size() != 4 || static_cast<quint8>(character[3]) != VniTable::Code(found))
            std::abort();
    }
    return 0;
}
