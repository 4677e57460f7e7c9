#pragma once

#include <QWidget>

#include <memory>

class FindingTable;
class QTableView;
class QTimer;
class Station;
struct EchoFinding;
struct Outcome;
namespace Ui {
class frmLineTest;
}

/// Asks every device whether it is there and says how it is reached, and looks for devices that the database does not
/// know. What was found last is there again when the window is opened anew.
///
/// Closing the window ends what it has begun.
class frmLineTest : public QWidget {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmLineTest(Station& station);
    ~frmLineTest() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void SetUpTable(QTableView& table, FindingTable* model, std::pair<int, int> names);
    void JoinParts();
    void Test();
    void Scan();
    /// Where the port's setting does not fit the adapter, offers to change it and to do the same again.
    void OnEnded(const Outcome& outcome, const EchoFinding& echo, void (frmLineTest::*again)());
    void Begin();
    void End();
    void ShowBusy();
    void ShowProgress(const QString& text, int done, int total);
    void ShowFindings();
    void ShowCounts();
    void OfferTypes();
    void Add(int type);
    QTableView& ShownTable() const;
    FindingTable& ShownModel() const;
    void Copy();

    Station& m_station;
    std::unique_ptr<Ui::frmLineTest> m_ui;
    FindingTable* m_devices;
    FindingTable* m_addresses;
    FindingTable* m_counts;
    QTimer* m_following;
    QTimer* m_counting;
    bool m_isOurs = false; ///< the running operation was begun here
    bool m_isScanned = false;
};
