#pragma once

#include <QPointer>
#include <QWidget>

class DataGrid;
class QLabel;
class QLineEdit;

/// A line below the lists that looks for a text in one of them: without regard to case and marks, in every column that
/// is shown. What is found becomes the current cell.
class FindBar : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(QWidget* parent);

    /// Opens the bar for a list, with what was looked for last; takes the keyboard.
    void Open(DataGrid& grid);
    /// Goes to the next place (1) or the one before (-1), round about; opens nothing.
    void Step(int step);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Show(int step);
    void Leave();

    QLineEdit* m_text;
    QLabel* m_found;
    QPointer<DataGrid> m_grid;
};
