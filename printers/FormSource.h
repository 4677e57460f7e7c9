#pragma once

#include "tickets/FormCompiler.h"

/// What a compiled form was made from: its file, and all that its compilation depends on beside it.
struct FormSource {
    QString file; ///< of a ticket form, or a compiled one ("*.bin"), which depends on nothing else
    PrinterFamily family;
    qint16 copies = 1;
    qint16 digits = 4;

    bool IsCompiled() const { return file.endsWith(QStringLiteral(".bin")); }

    /// As it is kept, one line of JSON. A file below `folder` is kept relative to it, so that both can be moved.
    QString Text(const QString& folder) const;
    /// @return nothing for a text that is none.
    static std::optional<FormSource> Parse(const QString& text, const QString& folder);
};
