#pragma once

#include <QPointer>
#include <QString>

#include <qcoro/qcorotask.h>

#include <functional>
#include <memory>

/// The kinds of modal box: the icon that a message or a question bears.
enum class BoxKind { Plain, Information, Exclamation, Critical };

/// Answer to a question that may be put off.
enum class Answer { Yes, No, Cancel };

/// A box that shows how far a long piece of work is. Going out of scope closes it.
class ProgressBox {
public:
    virtual ~ProgressBox() = default;

    /// Shows `text`, and `done` of `total`; a `total` of 0 means that nobody knows yet how much there is.
    virtual void Show(const QString& text, qint64 done, qint64 total) = 0;

    /// True once the user asked to stop.
    virtual bool IsCancelled() const = 0;
};

/// What the program asks and tells its user in boxes. The windows' implementation opens them without blocking; the
/// tests' one holds a queue of expected texts and answers.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    /// What boxes belong to: the window that the user works in now. An operation that begins keeps it, so that its
    /// boxes come over that window wherever the user is by then.
    virtual QPointer<QObject> Place() const { return {}; }
    /// Puts the next box over `place`, as long as that is there, and not over the window that the user works in.
    virtual void PlaceNext(const QPointer<QObject>& place) { Q_UNUSED(place) }

    /// Shows `text` and ends when the user has closed the box.
    virtual QCoro::Task<> ShowMessage(BoxKind kind, QString text) = 0;
    /// The same under a title of its own.
    virtual QCoro::Task<> ShowTitledMessage(BoxKind kind, QString title, QString text) = 0;
    /// A message that nobody waits for, with an exclamation mark, nothing for an empty text.
    void Warn(const QString& text) {
        if (!text.isEmpty())
            ShowMessage(BoxKind::Exclamation, text);
    }

    /// Asks `question` with the buttons Yes and No. Closing the box counts as No.
    virtual QCoro::Task<bool> AskYesNo(BoxKind kind, QString question) = 0;

    /// Asks `question` with the buttons Yes, No and Cancel. Closing the box counts as Cancel.
    virtual QCoro::Task<Answer> AskYesNoCancel(BoxKind kind, QString question) = 0;

    /// Lets the user choose an existing file. `filter` has the form "Text of all *.mdb|*.mdb"; `suggested` is the file
    /// that the dialog offers first. Empty if the user cancelled.
    virtual QCoro::Task<QString> ChooseFile(QString filter, QString suggested) = 0;

    /// Lets the user name a file to save to, after asking whether an existing one may be replaced. `filter` as for
    /// `ChooseFile`, `folder` is where the dialog begins. Empty if the user cancelled.
    virtual QCoro::Task<QString> ChooseSaveFile(QString filter, QString folder) = 0;

    /// Asks for a line of text. Empty if the user cancelled.
    virtual QCoro::Task<QString> AskText(QString prompt) = 0;

    /// Opens a progress box with a Cancel button.
    virtual std::unique_ptr<ProgressBox> ShowProgress(const QString& text) = 0;

    /// Closes every open box. What waits for one then throws `Ended`, and so does every later call: the program is
    /// about to end.
    virtual void Close() = 0;
};
