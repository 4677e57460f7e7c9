#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <functional>

/// What went over the line, in lines to read:
///
///     12:00:01.234 >> printer 32 "Main hall", seq 3, P status, data "" [02 50 33 30 31 50 33 36 03]
///     12:00:01.235 << printer 32 "Main hall", seq 3, P status, data "110001" [02 50 ...]
///     12:00:02.034 -- silent: bad check sum
///
/// ">>" goes to the devices. Remarks stand behind a frame in parentheses.
class Transcript {
public:
    /// Appends to the file from now on. @return what failed, or nothing.
    QString OpenFile(const QString& path);
    /// Gets each line without its line end.
    std::function<void(const QString&)> OnLine;

    bool IsOn() const { return OnLine || m_file.isOpen(); }
    /// @param who the device, @param what letter and meaning. `remark` may be empty.
    void Frame(bool toDevice, const QString& who, char sequence, const QString& what, const QByteArray& data,
               const QByteArray& raw, const QString& remark);
    void Remark(const QString& text);

    /// Printable characters as they are, others as \xNN.
    static QString Readable(const QByteArray& data);

private:
    void Write(const QString& line);

    QFile m_file;
};
