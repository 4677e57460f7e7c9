#pragma once

#include <QMainWindow>

#include <functional>
#include <memory>

class Dialogs;
class LogoCells;
class Station;
class TicketForms;
namespace Ui {
class frmEditLogo;
}

/// The logo editor: a small paint tool for the bitmaps that ticket forms name.
class frmEditLogo : public QMainWindow {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmEditLogo(Station& station, QWidget* parent = nullptr);
    ~frmEditLogo() override;

    /// Shows a picture file, reduced to two levels in a window of its own, as a new logo.
    void ImportPicture(const QString& path);

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void SetUpCommands();
    /// Runs `action` once the user has settled what becomes of the changed logo; not if he cancels.
    void AskToSave(const std::function<void()>& action);
    void New();
    void Open();
    void LoadLogoFile(const QString& path);
    /// Saves, after asking for a name if the logo is new, and runs `done`; not if no name is given or it cannot be
    /// written, so that nothing drawn is lost.
    void SaveLogo(const std::function<void()>& done);
    bool WriteLogo(const QString& path);
    void Import();
    void TakeImport(const LogoCells& logo);
    void ShowPixelVal(int x, int y);
    void resizeView();
    void ScrollTo(int value);
    void Zoom(int step);
    void ShowSteps();

    TicketForms& m_forms;
    Dialogs& m_dialogs;
    std::unique_ptr<Ui::frmEditLogo> m_ui;
    QString LogoFile;
    bool LogoChanged = false;
    bool LogoIsNew = false;
    bool m_mayClose = false;
};
