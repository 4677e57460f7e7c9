#pragma once

#include <QObject>
#include <QString>

class QScreen;
class QWidget;

/// Remembers how the user arranges the program's windows: place and size, splitters, columns whose width the user has
/// chosen, the tab in front, docks. It listens to the application: a window comes back when it is shown for the first
/// time, and is written down whenever it goes.
///
/// It stands in an ini file, one group a window under its object name; only windows whose name begins with "frm" are
/// remembered. Every window of the program is kept inside the screen it comes up on, with its frame.
class WindowPlaces : public ::QObject {
    Q_OBJECT

public:
    /// @param file is made with the first window that goes; one that cannot be written is no fault of the user's.
    explicit WindowPlaces(QString file);
    ~WindowPlaces() override;

    bool eventFilter(::QObject* watched, QEvent* event) override;

private:
    void Restore(QWidget& window) const;
    void Keep(const QWidget& window) const;

    const QString m_file;
};
