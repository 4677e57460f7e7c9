#pragma once

#include <QWidget>

#include <memory>

class FindingTable;
class QTableView;
class QTimer;
class Station;
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
    void OnTested(const Outcome& outcome);
    /// Offers to set whether the adapter echoes as it was found, and tests again.
    void OfferEcho(bool localEcho);
    void Scan();
    void Begin();
    void End();
    void ShowBusy();
    void ShowProgress(const QString& text, int done, int total);
    void ShowFindings();
    void OfferTypes();
    void Add(int type);
    QTableView& ShownTable() const;
    FindingTable& ShownModel() const;
    void Copy();
    void SaveCsv();

    Station& m_station;
    std::unique_ptr<Ui::frmLineTest> m_ui;
    FindingTable* m_devices;
    FindingTable* m_addresses;
    QTimer* m_following;
    bool m_isOurs = false; ///< the running operation was begun here
    bool m_isScanned = false;
};
