#pragma once

#include <QDialog>

#include <memory>

class Dialogs;
class RegistryStore;
namespace Ui {
class frmAbout;
}

/// Title, version and maker of the program.
class frmAbout : public QDialog {
    Q_OBJECT

public:
    /// @param version "major.minor.revision".
    /// @param contact the maker's address, up to three lines; what is empty is not shown.
    /// @param registry tells where the system's information tool lies. It and `dialogs` must outlive the window.
    frmAbout(const QString& version, const QStringList& contact, const RegistryStore& registry, Dialogs& dialogs,
             QWidget* parent = nullptr);
    ~frmAbout() override;

private:
    void StartSysInfo();

    const RegistryStore& m_registry;
    Dialogs& m_dialogs;
    std::unique_ptr<Ui::frmAbout> m_ui;
};
