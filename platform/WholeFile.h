#pragma once

#include "platform/LockFile.h"
#include "platform/Result.h"

#include <QByteArray>
#include <QFile>

/// A file that is replaced as a whole: written beside it as NAME.saving, flushed to the disk, and renamed. Until
/// `Finish`, and after a failure of what comes before the renaming, the old file is what it was. Where the name is a
/// link, the file that it leads to is replaced. What a killed program has left beside the file goes with the next save.
class WholeFile {
public:
    explicit WholeFile(const QString& path)
        : m_path(path) {}

    /// Opens the new file. To be called once, before anything is written.
    Result<> Begin();

    /// Adds to the new content. @return false if it could not be written, or `Begin` has failed; `Finish` says why.
    bool Write(QByteArrayView content);

    /// Puts the new file in place of the old one. @return success only once the new one lasts through a power cut;
    /// otherwise why not, with the file's name. Only if the folder could not be flushed is the new one in place then.
    Result<> Finish();

private:
    Failure Fault(const QString& reason);

    const QString m_path;
    QString m_target; ///< the file itself, whatever links lead to it
    LockFile m_lock;  ///< holds the new file
    QFile m_file;
    QString m_fault = QStringLiteral("It has not been begun.");
};

/// Replaces the file `path` by `content`.
Result<> WriteWhole(const QString& path, QByteArrayView content);

/// The content of the regular file `path`.
/// @param limit bytes; a larger file is not read at all.
/// @return a failure names the file and says what is wrong with it.
Result<QByteArray> ReadWhole(const QString& path, qint64 limit);

/// Removes what killed saves have left in a folder. Files that are being saved stay.
void RemoveUnfinished(const QString& folder);

/// Makes the renaming or removing of a file last through a power cut. @return success too where the file system cannot
/// flush folders; a failure names the folder.
Result<> FlushFolderOf(const QString& path);
