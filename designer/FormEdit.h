#pragma once

#include "tickets/TicketDocument.h"

#include <QTextEdit>

#include <optional>

/// The editor of a ticket form: characters with bold, size and colour, paragraphs with alignment, and nothing else.
///
/// Text is in VNI. Vietnamese typed or pasted in Unicode is turned into it; any other character outside Windows-1252 is
/// not taken, and `Refused` tells. Pasted text takes the format at the cursor; what was cut, copied or dragged in a
/// form keeps its own. Other programs get Unicode.
class FormEdit : public QTextEdit {
    Q_OBJECT

public:
    explicit FormEdit(QWidget* parent = nullptr);

    TicketDocument Document() const;
    /// Shows a document; it can be undone only as a whole document is made, not at all.
    void SetDocument(const TicketDocument& document);

    /// Takes everything out, as an edit that can be undone.
    void Clear();

    /// Inserts text at the start of the selection, without replacing anything, and selects it.
    void InsertToken(const QString& token);

    /// Formats of the selection, each only if it is the same for all of it. Without a selection those of the next
    /// character.
    struct Formats {
        std::optional<bool> bold;
        std::optional<double> size;
        std::optional<quint32> colour;
        std::optional<Alignment> alignment;
    };
    Formats SelectionFormats() const;

    void SetBold(bool bold);
    void SetSize(double points);
    void SetColour(quint32 colour);
    void SetAlignmentOf(Alignment alignment);

Q_SIGNALS:
    /// Characters were not taken. @param characters each once.
    void Refused(const QString& characters);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;
    void dropEvent(QDropEvent* event) override;

private:
    void InsertTyped(const QString& typed);
    /// Puts VNI text at the cursor. @param replaces characters before it.
    void InsertText(const QString& text, qsizetype replaces);
    void InsertDocument(const TicketDocument& inserted);
    void Merge(const QTextCharFormat& format);
    QTextCharFormat FormatOf(const CharacterFormat& format) const;
};
