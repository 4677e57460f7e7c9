#pragma once

#include "platform/RegistryStore.h"

#include <QDialog>

#include <memory>

class Station;
namespace Ui {
class frmOptions;
}

/// The window that edits the running options of the system and its start with the session. "OK" stores them at once,
/// "Cancel" leaves everything as it was.
class frmOptions : public QDialog {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    /// @param runCommand what the session starts, program and arguments.
    frmOptions(Station& station, RegistryStore registry, QString runCommand, QWidget* parent = nullptr);
    ~frmOptions() override;

private:
    void LoadOptions();
    /// @return what could not be saved; an empty text for what could.
    QStringList SaveOptions();
    /// Makes or takes away the start with the session. @return what went wrong, empty if nothing did.
    QString SaveAutoStart() const;
    void WarnOfTicketSeries();

    Station& m_station;
    const RegistryStore m_registry;
    const QString m_runCommand;
    std::unique_ptr<Ui::frmOptions> m_ui;
};
