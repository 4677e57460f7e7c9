#pragma once

#include <QString>
#include <QStringList>

#include <qcoro/qcorotask.h>

#include <optional>

class Station;

/// Exit status of `orvexctl`.
enum class Status {
    Good = 0,
    Failed = 1,   ///< something was found or not done
    Usage = 2,    ///< the command line makes no sense
    NoAnswer = 4, ///< a device did not answer
    NoLine = 5,   ///< the line cannot be opened, or went away
};

/// What the command line asks for.
struct Request {
    QString verb;                ///< "check", "load", "hubs", "init", "commission" or "verify"
    QString store;               ///< a database, or an older one to be taken over
    std::optional<QString> port; ///< that of the settings where it is not given
    std::optional<QString> baud; ///< bit/s
    QString folder;              ///< of settings, log and backups; that of the program if empty
    bool saysYes = false;        ///< to every question
};

/// Reads the words behind the program's name. Prints what is wrong with them; help where it is asked for.
/// @return the request, or the status to end with.
struct Reading {
    std::optional<Request> request;
    Status status = Status::Good;
};
Reading ReadCommandLine(const QStringList& words);

/// Starts the station, carries out the verb, and ends the station. Findings go to the standard output, one a line; what
/// the windows say in boxes goes to the error output.
///
/// - `check` looks for what cannot be loaded or sent; it needs no line.
/// - `load` loads every printer, `hubs` sends the configuration block to every hub, `init` runs the initialization.
/// - `commission` loads what is not in step, `verify` asks the devices only; see `Commissioning`.
QCoro::Task<Status> Carry(Station& station, Request request);
