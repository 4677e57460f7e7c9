#pragma once

#include <QLabel>

class QProgressBar;
class QPushButton;
class QStatusBar;

/// A label that never asks for more room than there is: what does not fit is left out at its end, and its tool tip has
/// all of it.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

/// The left part of a status bar: what an operation is at and how far it is, a button that ends it, and later what came
/// of it.
class OperationStatus : public ::QObject {
    Q_OBJECT

public:
    /// Adds the parts to `bar`, which owns them and this.
    explicit OperationStatus(QStatusBar& bar);

    /// @param canCancel whether the operation that begins can be ended by the user.
    void SetBusy(bool busy, bool canCancel);
    /// @param total 0 where nobody knows how far it is.
    void ShowProgress(const QString& text, int done, int total);
    /// What came of an operation. @param devices named in a list that `DetailsWanted` asks for; each is shown once.
    void ShowResult(const QString& text, const QStringList& devices = {});
    /// Names who did not answer; nothing for none.
    void ShowSilent(const QStringList& devices);
    const QStringList& Devices() const { return m_devices; }

Q_SIGNALS:
    void CancelWanted();
    /// The user has clicked a result that names devices. @param text all of them, one a line.
    void DetailsWanted(const QString& text);

protected:
    bool eventFilter(::QObject* watched, QEvent* event) override;

private:
    ElidedLabel* m_label;
    QProgressBar* m_bar;
    QPushButton* m_cancel;
    QStringList m_devices;
};
