#pragma once

#include <QString>

#include <vector>

/// How one character of a ticket form is set.
struct CharacterFormat {
    bool bold = false;
    double size = 10;   ///< points, in steps of a half
    quint32 colour = 0; ///< 0xRRGGBB; "automatic" is black
    bool operator==(const CharacterFormat&) const = default;
};

enum class Alignment { Left = 0, Right = 1, Centre = 2 };

/// A ticket form as it is written: paragraphs of characters with formats.
///
/// Between two paragraphs stands a line end, so that a text that ends in one has an empty last paragraph. A document
/// has at least one paragraph.
struct TicketDocument {
    /// Characters in one format; no line ends among them, and never empty.
    struct Run {
        QString text;
        CharacterFormat format;
        bool operator==(const Run&) const = default;
    };

    struct Paragraph {
        std::vector<Run> runs; ///< neighbours differ in format
        Alignment alignment = Alignment::Left;
        CharacterFormat empty; ///< format of the paragraph itself while it has no characters
        bool operator==(const Paragraph&) const = default;

        /// Adds characters, to the last run if it has that format.
        void Append(const QString& text, const CharacterFormat& format);
        /// Format of the line end behind it: that of the last character.
        const CharacterFormat& EndFormat() const { return runs.empty() ? empty : runs.back().format; }
    };

    std::vector<Paragraph> paragraphs{1};
    bool operator==(const TicketDocument&) const = default;

    /// All characters, paragraphs joined by CR LF.
    QString Text() const;
};
