#pragma once

#include <QLayout>

#include <vector>

class QBoxLayout;

/// A row of controls that goes on in a line below where the window is too narrow for it.
class FlowLayout : public QLayout {
    Q_OBJECT

public:
    FlowLayout();
    ~FlowLayout() override;

    /// Puts a flow with the same items in place of a row that stands in another box layout. Spacers share what a line
    /// leaves free.
    static void InPlaceOf(QBoxLayout& row);

    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    void setGeometry(const QRect& place) override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;

private:
    void Add(QLayout& inner);
    /// @return the height of all lines. @param apply whether items are put in their places.
    int Arrange(const QRect& place, bool apply) const;

    std::vector<QLayoutItem*> m_items;
};
