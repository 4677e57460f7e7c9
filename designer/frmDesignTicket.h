#pragma once

#include "platform/Outcome.h"
#include "tickets/TicketDocument.h"
#include "tickets/TicketPaper.h"

#include <QMainWindow>
#include <QTimer>

#include <functional>
#include <memory>

class Dialogs;
class Station;
class TicketForms;
enum class Logos;
namespace Ui {
class frmDesignTicket;
}

/// The ticket designer: writes a ticket form, shows how it will be printed, and sends it to printers.
class frmDesignTicket : public QMainWindow {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmDesignTicket(Station& station, QWidget* parent = nullptr);
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

    void Send();
    void SendToAll(Logos logos);
    /// Follows a transfer to its end, and shows what came of it.
    void Follow(QCoro::Task<Outcome> transfer);
    void ShowSending(bool isSending);
    void ShowBusy(bool busy);

    Station& m_station;
    TicketForms& m_forms;
    Dialogs& m_dialogs;
    std::unique_ptr<Ui::frmDesignTicket> m_ui;
    TicketPaper m_paper;
    QTimer m_preview;
    QString m_formPath; ///< of the loaded form, empty if it has none
    bool m_formChanged = false;
    bool m_mayClose = false; ///< the user has given up what is not saved
    bool m_isSending = false;
};
