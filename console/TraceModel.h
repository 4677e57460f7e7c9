#pragma once

#include "console/TraceText.h"

#include <QAbstractTableModel>

#include <deque>
#include <functional>
#include <optional>

class QIODevice;

/// The rows of the line's trace that a filter lets through, newest last. Follows the line ten times a second, so that a
/// busy line costs little.
class TraceModel : public QAbstractTableModel {
    Q_OBJECT

public:
    /// Of a row that is marked.
    static constexpr int IsMarkedRole = Qt::UserRole;

    /// The references must outlive the model.
    TraceModel(BusTrace& trace, const model::Installation& installation, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// Lets through only what is about a device address, or a command letter; nothing set lets all through.
    void SetFilter(std::optional<quint8> address, std::optional<char> letter);

    /// While paused the rows stand still; the trace goes on and is taken up at the end of the pause.
    void SetPaused(bool paused);

    /// Forgets all rows, those of the trace too.
    void Clear();

    /// Takes up what has come since. Does nothing while paused. To be called while the rows are looked at.
    void Follow();

    /// The given rows with tabs between the columns, a line each, under the titles.
    QString AsText(const QModelIndexList& rows) const;

    /// Writes all rows that are let through, with aligned columns or separated by commas (RFC 4180). UTF-8.
    void WriteText(QIODevice& file) const;
    void WriteCsv(QIODevice& file) const;

Q_SIGNALS:
    /// Rows have come or gone.
    void RowsChanged();

private:
    bool IsLetThrough(quint64 serial) const;
    void DropOverwritten();
    QStringList Texts(quint64 serial) const;

    BusTrace& m_trace;
    TraceText m_text;
    std::deque<quint64> m_rows;       ///< serials
    quint64 m_next = 0;               ///< serial of the first row not looked at
    std::optional<quint64> m_waiting; ///< the last row, whose answer had not come yet
    std::optional<quint8> m_address;
    std::optional<char> m_letter;
    bool m_paused = false;
};
