#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QSaveFile>

/// A file that is replaced as a whole: written beside it under another name, flushed to the disk, and renamed. Until
/// `Finish`, and after a failure of what comes before the renaming, the old file is what it was.
class WholeFile {
public:
    explicit WholeFile(const QString& path)
        : m_file(path) {}

    /// Opens the new file. To be called once, before anything is written.
    Result<> Begin();

    /// Adds to the new content. @return false if it could not be written, or `Begin` has failed; `Finish` says why.
    bool Write(QByteArrayView content);

    /// Puts the new file in place of the old one. @return success only once the new one lasts through a power cut;
    /// otherwise why not, with the file's name. Only if the folder could not be flushed is the new one in place then.
    Result<> Finish();

private:
    Failure Fault() const;

    QSaveFile m_file;
    bool m_isGood = false;
};

/// Replaces the file `path` by `content`.
Result<> WriteWhole(const QString& path, QByteArrayView content);

/// The content of the regular file `path`.
/// @param limit bytes; a larger file is not read at all.
/// @return a failure names the file and says what is wrong with it.
Result<QByteArray> ReadWhole(const QString& path, qint64 limit);

/// Makes the renaming or removing of a file last through a power cut. @return success too where the file system cannot
/// flush folders; a failure names the folder.
Result<> FlushFolderOf(const QString& path);
