#include "tests/setup/SetupWindow.h"
#include "tests/support/RandomEditor.h"

#include <QClipboard>

namespace {

constexpr int Counters = 24;
constexpr int Served = 6; ///< counters of one service
constexpr int BehindHub = 12;

struct Service {
    QString name;
    int first; ///< row of the first of its counters
};

const std::vector<Service> Services = {
    {u"Gửi tiền tiết kiệm"_qs, 0}, {u"Rút tiền mặt"_qs, 6}, {u"Chuyển khoản"_qs, 12}, {u"Mở tài khoản"_qs, 18},
    {u"Tín dụng cá nhân"_qs, 3},   {u"Doanh nghiệp"_qs, 9}, {u"Thẻ ATM"_qs, 15},      {u"Khách ưu tiên"_qs, 18},
};

/// A bank hall of 24 counters, 8 services, 2 printers, a hub and 2 displays, described from an empty database until the
/// check finds nothing; every key and every click is counted, a chord as two keys.
class HallRoadTest : public SetupWindow {
protected:
    HallRoadTest()
        : SetupWindow({}) {}

    void Click(DataGrid& grid, int row, int column, Qt::KeyboardModifiers modifiers = {}) {
        m_clicks += 1;
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, modifiers, WindowDriver::Place(grid, row, column));
    }

    void ClickHead(DataGrid& grid, int row, Qt::KeyboardModifiers modifiers = {}) {
        m_clicks += 1;
        grid.scrollTo(grid.model()->index(row, 0));
        QHeaderView& head = *grid.verticalHeader();
        QTest::mouseClick(head.viewport(), Qt::LeftButton, modifiers,
                          QPoint(head.width() / 2, head.sectionViewportPosition(row) + 4));
    }

    void Button(const char* name) {
        m_clicks += 1;
        m_hands->ClickButton(name);
    }

    void Text(const QString& text) {
        m_keys += static_cast<int>(text.size());
        if (auto* box = qobject_cast<QComboBox*>(QApplication::focusWidget()))
            QTest::keyClicks(box, text);
        else
            WindowDriver::Keys(text);
    }

    void Key(Qt::Key key) {
        m_keys += 1;
        WindowDriver::Press(key);
    }

    void Chord(const char* keys) {
        m_keys += 2;
        QWidget* focus = QApplication::focusWidget();
        QTest::keySequence(focus ? focus : m_window.get(), QKeySequence(QString::fromLatin1(keys)));
        QApplication::processEvents();
    }

    DataGrid& Grid(const char* name) const { return m_hands->Grid(name); }

    /// A row cell by cell with Tab.
    void EnterRow(DataGrid& grid, int column, const QStringList& texts) {
        Click(grid, grid.model()->rowCount() - 1, column);
        for (qsizetype i = 0; i < texts.size(); ++i) {
            Text(texts[i]);
            Key(i + 1 == texts.size() ? Qt::Key_Return : Qt::Key_Tab);
        }
        grid.setFocus();
        QApplication::processEvents();
    }

    void EnterObject(const QString& name, int number, int address, const QString& type) {
        EnterRow(Grid("TDBGridDisplay"), 0,
                 {name, QString::number(number), QString::number(address), type, QStringLiteral("Y")});
    }

    /// Doubles rows until there are enough; those behind `first` are all alike.
    void Multiply(int first, int count) {
        DataGrid& objects = Grid("TDBGridDisplay");
        for (int have = 1; have < count;) {
            const int more = std::min(have, count - have);
            ClickHead(objects, first);
            if (more > 1)
                ClickHead(objects, first + more - 1, Qt::ShiftModifier);
            Chord("Ctrl+D");
            have += more;
        }
    }

    void BuildPlan() {
        Chord("Alt+2");
        m_dialogs.ExpectQuestion(BoxKind::Exclamation,
                                 QStringLiteral("This will delete all scan list. Do you want to continue?"), true);
        Button("cmdAuto");
        m_keys += 1; // the answer
    }

    void Update() {
        m_dialogs.ExpectMessage(BoxKind::Plain, QStringLiteral("Update Done."));
        Button("cmdUpdate");
        m_keys += 1;
    }

    void OneByOne() {
        int number = 0;
        for (const Service& service : Services) {
            ++number;
            EnterRow(Grid("TDBGridQueue"), 1,
                     {service.name, QString::number(number), QStringLiteral("$1"), QString::number(number),
                      QStringLiteral("Y")});
        }
        for (int i = 1; i <= Counters; ++i)
            EnterObject(QStringLiteral("Quầy %1").arg(i), i, i, QStringLiteral("C"));
        for (int i = 1; i <= 2; ++i)
            EnterObject(QStringLiteral("Máy in %1").arg(i), 40 + i, 40 + i, QStringLiteral("P"));
        for (int i = 1; i <= 2; ++i)
            EnterObject(QStringLiteral("Bảng %1").arg(i), 50 + i, 50 + i, QStringLiteral("D"));
        EnterObject(QStringLiteral("HUB"), 60, 60, QStringLiteral("H"));
        for (int service = 0; service < static_cast<int>(Services.size()); ++service) {
            Click(Grid("TDBGridQueue"), service, 1);
            for (int i = 0; i < Served; ++i) {
                Click(Grid("TDBGridDisplay"), Services[static_cast<std::size_t>(service)].first + i, 0);
                Button("cmdNew");
            }
        }
        BuildPlan();
        Chord("Alt+4");
        Click(Grid("TDBGridHUB"), 0, 0);
        for (int i = 0; i < BehindHub; ++i) {
            Click(Grid("TDBGridCounters"), 0, 0);
            Button("cmdAddCounterToHub");
        }
        Chord("Alt+3");
        for (int display = 0; display < 2; ++display) {
            for (int counter = 1; counter <= Counters; ++counter) {
                m_clicks += 1;
                m_keys += 2;
                WindowDriver::Choose(Grid("TDBGrid1"), display, counter,
                                     display == 0 ? QStringLiteral("L") : QStringLiteral("R"));
            }
        }
        Update();
    }

    void InBlocks() {
        // The bank's list of services, copied in a spreadsheet: two clicks and a chord there.
        QStringList lines;
        for (std::size_t i = 0; i < Services.size(); ++i)
            lines += QStringLiteral("%1\t%2\t$1\t%2\tYes").arg(Services[i].name).arg(i + 1);
        QApplication::clipboard()->setText(lines.join(u'\n'));
        m_clicks += 2;
        m_keys += 2;
        Click(Grid("TDBGridQueue"), 0, 1);
        Chord("Ctrl+V");
        EnterObject(QStringLiteral("Quầy 1"), 1, 1, QStringLiteral("C"));
        Multiply(0, Counters);
        EnterObject(QStringLiteral("Máy in 1"), 41, 41, QStringLiteral("P"));
        Multiply(Counters, 2);
        EnterObject(QStringLiteral("Bảng 1"), 51, 51, QStringLiteral("D"));
        Multiply(Counters + 2, 2);
        EnterObject(QStringLiteral("HUB"), 60, 60, QStringLiteral("H"));
        for (int service = 0; service < static_cast<int>(Services.size()); ++service) {
            const int first = Services[static_cast<std::size_t>(service)].first;
            Click(Grid("TDBGridQueue"), service, 1);
            Click(Grid("TDBGridDisplay"), first, 0);
            Click(Grid("TDBGridDisplay"), first + Served - 1, 0, Qt::ShiftModifier);
            Button("cmdNew");
        }
        BuildPlan();
        Chord("Alt+4");
        Click(Grid("TDBGridHUB"), 0, 0);
        Click(Grid("TDBGridCounters"), 0, 0);
        Click(Grid("TDBGridCounters"), BehindHub - 1, 0, Qt::ShiftModifier);
        Button("cmdAddCounterToHub");
        Chord("Alt+3");
        DataGrid& matrix = Grid("TDBGrid1");
        for (int display = 0; display < 2; ++display) {
            Click(matrix, display, 1);
            WindowDriver::Press(Qt::Key_Escape); // the list that the click has opened
            m_keys += 1;
            Click(matrix, display, Counters, Qt::ShiftModifier);
            m_keys += 1;
            QTest::keyClick(&matrix, display == 0 ? Qt::Key_L : Qt::Key_R);
        }
        Update();
    }

    /// What was described, without the keys that rows were given.
    QString Hall() {
        return Stored(
                   QStringLiteral("SELECT q_Number,q_Name,q_Description,q_Button,q_On FROM Queue ORDER BY q_Number")) +
               Stored(
                   QStringLiteral("SELECT d_Number,d_Name,d_Address,d_Type,d_On,d_HubId FROM Display ORDER BY d_Id")) +
               Stored(QStringLiteral("SELECT q_Id,d_Id FROM [Queue-Display] ORDER BY 1,2")) +
               Stored(QStringLiteral("SELECT d_Id,[Order] FROM ScanPlan ORDER BY 2")) +
               Stored(QStringLiteral("SELECT inf_Id,d_Id,Dir_Id FROM [Info-Direction] ORDER BY 1,2"));
    }

    int m_keys = 0;
    int m_clicks = 0;
};

} // namespace

TEST_F(HallRoadTest, AHallIsDescribedInBlocksWithAFifthOfTheHandling) {
    Show();
    OneByOne();
    const QString hall = Hall();
    const int keys = std::exchange(m_keys, 0);
    const int clicks = std::exchange(m_clicks, 0);
    EXPECT_EQ(Find<QPushButton>("cmdFindings").text(), QStringLiteral("Check: nothing found"));
    m_window.reset();
    m_station.database.CloseDatabase();
    QFile::remove(m_store);
    MakeStore(m_store, {});
    m_station.database.OpenDatabase(m_store);
    EXPECT_TRUE(m_station.reload.ReloadAll());
    Show();
    InBlocks();
    EXPECT_EQ(Hall(), hall);
    EXPECT_EQ(Find<QPushButton>("cmdFindings").text(), QStringLiteral("Check: nothing found"));
    RecordProperty("before", keys + clicks);
    RecordProperty("after", m_keys + m_clicks);
    EXPECT_LE((m_keys + m_clicks) * 5, keys + clicks)
        << keys << " keys and " << clicks << " clicks before, " << m_keys << " and " << m_clicks << " after";
}
