#include "widgets/WindowPlaces.h"

#include <QApplication>
#include <QDockWidget>
#include <QEvent>
#include <QHeaderView>
#include <QMainWindow>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>
#include <QTreeView>

#include <algorithm>

namespace {

constexpr QSize Frame(8, 36); ///< pixels that a desktop puts around a window
constexpr const char* Restored = "placesRestored";
constexpr const char* Chosen = "widthsChosen"; ///< of a header that the user has pulled

bool IsRemembered(const QWidget& window) {
    return window.objectName().startsWith(QStringLiteral("frm"));
}

QHeaderView* HeaderOf(QAbstractItemView* view) {
    if (auto* const table = qobject_cast<QTableView*>(view))
        return table->horizontalHeader();
    if (auto* const tree = qobject_cast<QTreeView*>(view))
        return tree->header();
    return nullptr;
}

/// Columns of lists, each under the name of its list.
template <typename Use>
void ForHeaders(const QWidget& window, Use use) {
    for (QAbstractItemView* const view : window.findChildren<QAbstractItemView*>()) {
        QHeaderView* const header = HeaderOf(view);
        if (header && !view->objectName().isEmpty())
            use(QStringLiteral("Columns/") + view->objectName(), *header);
    }
}

void RestoreWidths(QHeaderView& header, const QVariantList& widths) {
    // Lists of another build, or matrices of another hall, have other columns.
    if (widths.isEmpty() || widths.size() != header.count())
        return;
    for (int section = 0; section < header.count(); ++section) {
        const int width = widths[section].toInt();
        if (header.sectionResizeMode(section) == QHeaderView::Interactive && width >= header.minimumSectionSize())
            header.resizeSection(section, width);
    }
    header.setProperty(Chosen, true);
}

/// Makes a window no larger than its screen has room, and puts it there.
void KeepOnScreen(QWidget& window) {
    const bool isFramed = (window.windowType() == Qt::Window || window.windowType() == Qt::Dialog) &&
                          !window.windowFlags().testFlag(Qt::FramelessWindowHint);
    if (!isFramed || window.isMaximized() || window.isFullScreen())
        return;
    const QRect room = window.screen()->availableGeometry();
    window.resize(window.size().boundedTo(room.size() - Frame));
    if (!window.testAttribute(Qt::WA_Moved))
        return;
    const QPoint last = room.bottomRight() - QPoint(window.width() + Frame.width(), window.height() + Frame.height());
    window.move(std::clamp(window.x(), room.left(), std::max(room.left(), last.x())),
                std::clamp(window.y(), room.top(), std::max(room.top(), last.y())));
}

} // namespace

WindowPlaces::WindowPlaces(QString file)
    : m_file(std::move(file)) {
    QApplication::instance()->installEventFilter(this);
}

WindowPlaces::~WindowPlaces() = default;

bool WindowPlaces::eventFilter(::QObject* watched, QEvent* event) {
    const bool comes = event->type() == QEvent::Show;
    if ((!comes && event->type() != QEvent::Hide) || event->spontaneous() || !watched->isWidgetType())
        return false;
    auto& window = static_cast<QWidget&>(*watched);
    if (!window.isWindow())
        return false;
    if (!comes) {
        if (IsRemembered(window))
            Keep(window);
        return false;
    }
    if (IsRemembered(window) && !window.property(Restored).toBool()) {
        window.setProperty(Restored, true);
        Restore(window);
    }
    KeepOnScreen(window);
    return false;
}

void WindowPlaces::Restore(QWidget& window) const {
    QSettings places(m_file, QSettings::IniFormat);
    places.beginGroup(window.objectName());
    window.restoreGeometry(places.value(QStringLiteral("Geometry")).toByteArray());
    for (QSplitter* const splitter : window.findChildren<QSplitter*>())
        splitter->restoreState(places.value(splitter->objectName()).toByteArray());
    for (QTabWidget* const tabs : window.findChildren<QTabWidget*>()) {
        bool isNumber = false;
        const int tab = places.value(tabs->objectName()).toInt(&isNumber);
        if (isNumber && tab >= 0 && tab < tabs->count())
            tabs->setCurrentIndex(tab);
    }
    for (QDockWidget* const dock : window.findChildren<QDockWidget*>())
        dock->setVisible(places.value(dock->objectName(), !dock->isHidden()).toBool());
    ForHeaders(window, [&places](const QString& name, QHeaderView& header) {
        RestoreWidths(header, places.value(name).toList());
        // What the program fits to its content is fitted anew each time.
        connect(&header, &QHeaderView::sectionResized, &header, [&header] {
            if (QApplication::mouseButtons() != Qt::NoButton)
                header.setProperty(Chosen, true);
        });
    });
}

void WindowPlaces::Keep(const QWidget& window) const {
    QSettings places(m_file, QSettings::IniFormat);
    places.beginGroup(window.objectName());
    places.setValue(QStringLiteral("Geometry"), window.saveGeometry());
    for (const QSplitter* const splitter : window.findChildren<QSplitter*>())
        places.setValue(splitter->objectName(), splitter->saveState());
    for (const QTabWidget* const tabs : window.findChildren<QTabWidget*>())
        places.setValue(tabs->objectName(), tabs->currentIndex());
    for (const QDockWidget* const dock : window.findChildren<QDockWidget*>())
        places.setValue(dock->objectName(), !dock->isHidden());
    ForHeaders(window, [&places](const QString& name, const QHeaderView& header) {
        if (!header.property(Chosen).toBool())
            return;
        QVariantList widths;
        for (int section = 0; section < header.count(); ++section)
            widths.append(header.sectionSize(section));
        places.setValue(name, widths);
    });
}
