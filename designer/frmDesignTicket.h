#pragma once

#include "tickets/TicketDocument.h"
#include "tickets/TicketPaper.h"

#include <QMainWindow>
#include <QTimer>

#include <functional>
#include <memory>

class Dialogs;
class TicketForms;
namespace Ui {
class frmDesignTicket;
}
namespace model {
struct Installation;
}

/// The ticket designer: writes a ticket form, shows how it will be printed, and sends it to printers.
class frmDesignTicket : public QMainWindow {
    Q_OBJECT

public:
    /// The references must outlive the window.
    frmDesignTicket(TicketForms& forms, const model::Installation& installation, Dialogs& dialogs,
                    QWidget* parent = nullptr);
    ~frmDesignTicket() override;

    /// Lists the logos of the data folder anew.
    void ListLogos();

Q_SIGNALS:
    /// The user wants to edit a logo.
    void LogoEditorWanted();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void SetUpFormats();
    void SetUpTokens();
    void SetUpCommands();
    void LoadTicketOptions();
    void FillPrinters();
    void GetCurrentFormats();
    int GetColorIndex(quint32 colour) const;
    void NoteChange();
    void ShowPreview();

    void New();
    void Open();
    void Save();
    void LoadForm(const QString& path);
    void SaveForm(const QString& path);
    void Warn(const QString& text);

    void Send();
    void SendToAll(bool withLogo);
    void ShowRunning(bool running);
    void ShowProgress(const QString& printer, const QString& phase, int done, int total);

    TicketForms& m_forms;
    const model::Installation& m_installation;
    Dialogs& m_dialogs;
    std::unique_ptr<Ui::frmDesignTicket> m_ui;
    TicketPaper m_paper;
    QTimer m_preview;
    QString m_formPath; ///< of the loaded form, empty if it has none
    bool m_formChanged = false;
    bool m_mayClose = false; ///< the user has given up what is not saved
    bool m_isBusy = false;
};
