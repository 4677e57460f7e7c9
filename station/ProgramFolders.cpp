#include "station/ProgramFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

ProgramFolders FoldersOfProgram() {
    const QString install = QCoreApplication::applicationDirPath();
    const QString shared = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return PrepareFolders(install, shared + QStringLiteral("/Orvex"), QFileInfo(install).isWritable());
}

ProgramFolders PrepareFolders(const QString& install, const QString& ofUser, bool isWritable) {
    if (isWritable)
        return {install, install};
    QDir().mkpath(ofUser + QStringLiteral("/Data"));
    // What the user has put in their place stays.
    for (const QString& name : {QStringLiteral("VNIl.dat"), QStringLiteral("VCODE.dat")}) {
        const QString own = ofUser + u'/' + name;
        if (!QFile::exists(own) && QFile::copy(install + u'/' + name, own))
            QFile::setPermissions(own, QFile::permissions(own) | QFile::WriteOwner);
    }
    return {install, ofUser};
}
