#pragma once

#include "platform/Dialogs.h"

#include <QStringList>

/// How an operation of the station ended, and the box that says so.
struct [[nodiscard]] Outcome {
    enum class End : quint8 {
        Done,      ///< everything was done; what counts was answered
        Refused,   ///< nothing was begun
        Failed,    ///< something was not done
        Cancelled, ///< the user, or the end of the program, stopped it where it stood
    };

    End end = End::Done;
    BoxKind kind = BoxKind::Plain;
    QString text;       ///< of the box; empty where there is nothing to say
    QStringList silent; ///< names of the devices that did not answer

    bool IsDone() const { return end == End::Done; }

    static Outcome Done(BoxKind kind = BoxKind::Plain, const QString& text = {}) { return {End::Done, kind, text, {}}; }
    static Outcome Refused(const QString& text) { return {End::Refused, BoxKind::Exclamation, text, {}}; }
    static Outcome Failed(const QString& text, BoxKind kind = BoxKind::Exclamation) {
        return {End::Failed, kind, text, {}};
    }
    /// Failed because of devices that did not answer.
    static Outcome Silent(const QStringList& names, const QString& text, BoxKind kind = BoxKind::Exclamation) {
        return {End::Failed, kind, text, names};
    }
    static Outcome Cancelled() { return {End::Cancelled, BoxKind::Plain, {}, {}}; }
};
