#pragma once

#include "database/EditHistory.h"
#include "database/LoadRecord.h"
#include "database/StoreCopies.h"

#include <QStringList>

/// Something that happened to an installation.
struct SiteEvent {
    enum class Kind : quint8 {
        Edit, ///< of the description
        Load, ///< of a device, or what a printer told of itself
        Copy, ///< of the store, made before something was done
    };

    Kind kind = Kind::Edit;
    QString moment; ///< "yyyy-MM-dd hh:mm:ss", local time
    QString user;
    QString what;        ///< in words
    QStringList where;   ///< tables of an edit, as `editwords::TableName`; the device of a load
    bool isBad = false;  ///< a load that did not end well
    qint64 act = 0;      ///< of an edit
    QString path;        ///< of a copy
    QStringList details; ///< of a load
};

/// All that happened to an installation, in one list: what was edited, what was loaded where, and copies of the store.
class SiteHistory {
public:
    /// The references must outlive this.
    SiteHistory(const EditHistory& edits, const LoadRecord& loads, const StoreCopies& copies)
        : m_edits(edits)
        , m_loads(loads)
        , m_copies(copies) {}

    /// The newest events first. @param most so many edits and so many loads at most.
    Result<std::vector<SiteEvent>> Read(int most) const;

    /// More about an event, line by line: what an edit has changed; how a load went; what would be changed by going
    /// back to a copy.
    Result<QStringList> Details(const SiteEvent& event) const;

private:
    const EditHistory& m_edits;
    const LoadRecord& m_loads;
    const StoreCopies& m_copies;
};
