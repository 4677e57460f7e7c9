#pragma once

#include "station/SiteHistory.h"

#include <QWidget>

#include <memory>
#include <optional>

class QStandardItemModel;
class Station;
namespace Ui {
class frmHistory;
}

/// What happened to the installation, day by day: edits, loads and copies of the store; and the way back to before any
/// edit, or to a copy.
class frmHistory : public QWidget {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmHistory(Station& station);
    ~frmHistory() override;

Q_SIGNALS:
    /// The user wants to see the loads with all their figures.
    void RecordWanted();

private:
    void Refresh();
    void ListPlaces();
    void ShowEvents();
    /// @param chosen the event that stays chosen.
    void ShowEventsAt(const std::optional<SiteEvent>& chosen);
    void ShowDetails();
    void GoBack();
    /// The event that the user has chosen; nothing on a day's line.
    std::optional<SiteEvent> Chosen() const;

    Station& m_station;
    std::unique_ptr<Ui::frmHistory> m_ui;
    QStandardItemModel* m_model;
    std::vector<SiteEvent> m_events;
};
