#pragma once

#include <QString>

/// Where the program lies and where its user's files lie.
struct ProgramFolders {
    QString install; ///< of the executable: the importer, the letter files as they came, the manual
    QString user;    ///< settings, log, database, backups, forms
};

/// The folders of the running program, prepared.
ProgramFolders FoldersOfProgram();

/// The user's files lie beside the executable if that folder can be written to, otherwise in a folder of the user's own
/// (~/.local/share/Orvex), which is made at the first start, with the letter files and the empty folder of forms.
/// @param install the folder of the executable.
/// @param ofUser  the user's own folder.
/// @param isWritable whether `install` can be written to.
ProgramFolders PrepareFolders(const QString& install, const QString& ofUser, bool isWritable);
