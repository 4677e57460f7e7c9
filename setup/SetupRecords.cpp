#include "setup/SetupRecords.h"

#include "station/Station.h"

namespace {

constexpr int LongestText = 64;  ///< characters of a name, a description, a note
constexpr int LongestSeries = 4; ///< characters

// Other parts of the window find values by the place of their column.

std::vector<GridColumn> ServiceColumns() {
    return {
        {.caption = QStringLiteral("ID"), .field = QStringLiteral("q_Id"), .readOnly = true},
        {.caption = QStringLiteral("Service Name"),
         .field = QStringLiteral("q_Name"),
         .maxLength = LongestText,
         .countsUp = true,
         .isWide = true},
        {.caption = QStringLiteral("Number"), .field = QStringLiteral("q_Number"), .countsUp = true},
        {.caption = QStringLiteral("Description"),
         .field = QStringLiteral("q_Description"),
         .maxLength = LongestText,
         .isWide = true},
        {.caption = QStringLiteral("Series"), .field = QStringLiteral("q_series"), .maxLength = LongestSeries},
        {.caption = QStringLiteral("Button"), .field = QStringLiteral("q_Button"), .countsUp = true},
        GridColumn::YesNo(QStringLiteral("Active"), QStringLiteral("q_On")),
        {.caption = QStringLiteral("Route To"), .field = QStringLiteral("q_route")},
        {.caption = QStringLiteral("Notes"),
         .field = QStringLiteral("q_Notes"),
         .maxLength = LongestText,
         .isWide = true},
        {.caption = QStringLiteral("q_Id"), .field = QStringLiteral("q_Id"), .readOnly = true},
    };
}

/// The words that the column of the state shows, which make its width.
std::vector<std::pair<int, QString>> StateWords() {
    std::vector<std::pair<int, QString>> words;
    for (const StepState state :
         {StepState::InStep, StepState::NotAsked, StepState::Changed, StepState::NeverLoaded, StepState::Failed})
        words.emplace_back(static_cast<int>(state), NameOf(state));
    return words;
}

std::vector<GridColumn> ObjectColumns() {
    return {
        {.caption = QStringLiteral("Counter Name"),
         .field = QStringLiteral("d_Name"),
         .maxLength = LongestText,
         .countsUp = true,
         .isWide = true},
        {.caption = QStringLiteral("Number"), .field = QStringLiteral("d_Number"), .countsUp = true},
        {.caption = QStringLiteral("Address"), .field = QStringLiteral("d_Address"), .countsUp = true},
        {.caption = QStringLiteral("Type"),
         .field = QStringLiteral("d_Type"),
         .values = {{3, QStringLiteral("Hub")},
                    {2, QStringLiteral("Display")},
                    {1, QStringLiteral("Printer")},
                    {0, QStringLiteral("Counter")}}},
        GridColumn::YesNo(QStringLiteral("Active"), QStringLiteral("d_On")),
        {.caption = QStringLiteral("Notes"), .field = QString(), .readOnly = true},
        {.caption = QStringLiteral("d_Id"), .field = QStringLiteral("d_Id"), .readOnly = true},
        {.caption = QStringLiteral("State"), .field = QString(), .readOnly = true, .values = StateWords()},
    };
}

GridColumn Shown(const char* caption, const char* field, bool isWide = false) {
    return {.caption = QString::fromLatin1(caption),
            .field = QString::fromLatin1(field),
            .readOnly = true,
            .isWide = isWide};
}

std::vector<GridColumn> ObjectListColumns() {
    return {Shown("CounterName", "d_Name", true), Shown("Number", "d_Number"), Shown("Address", "d_Address"),
            Shown("CounterID", "d_Id")};
}

std::vector<GridColumn> ServiceCounterColumns() {
    return {Shown("ID", "ID"), Shown("Service Name", "Queue.q_Name", true),
            Shown("Counter Name", "Display.d_Name", true), Shown("d_Id", "Display.d_Id"), Shown("q_Id", "Queue.q_Id")};
}

std::vector<GridColumn> PlanColumns() {
    return {
        Shown("ID", "ID"),
        {.caption = QStringLiteral("CounterID"),
         .field = QStringLiteral("d_Id"),
         .refersTo = QStringLiteral("Display.d_Id"),
         .refersToA = QStringLiteral("an object")},
        {.caption = QStringLiteral("CounterName"),
         .field = QStringLiteral("Display.d_Name"),
         .maxLength = LongestText,
         .isWide = true},
        {.caption = QStringLiteral("Order"), .field = QStringLiteral("Order")},
    };
}

std::vector<GridColumn> HubColumns() {
    return {Shown("Name", "d_Name", true), Shown("Number", "d_Number"), Shown("Address", "d_Address"),
            Shown("ID", "d_Id")};
}

std::vector<GridColumn> FreeCounterColumns() {
    GridColumn active = GridColumn::YesNo(QStringLiteral("Active"), QStringLiteral("d_On"));
    active.readOnly = true;
    return {Shown("Counter Name", "d_Name", true), Shown("Number", "d_Number"), Shown("Address", "d_Address"), active,
            Shown("d_Id", "d_Id")};
}

std::vector<GridColumn> HubCounterColumns() {
    return {Shown("Name", "d_Name", true), Shown("Number", "d_Number"), Shown("ID", "d_Id")};
}

/// Objects to look at; all of them if there is no condition.
GridSource ObjectList(const QString& where = {}) {
    return {.table = QStringLiteral("Display"), .where = where, .canAdd = false, .canRemove = false};
}

} // namespace

SetupRecords::SetupRecords(Station& station)
    : rsQueue(station.Store(), {.table = QStringLiteral("Queue"), .order = QStringLiteral("q_Number")},
              ServiceColumns())
    , rsDisplay(station.Store(), {.table = QStringLiteral("Display")}, ObjectColumns())
    , rsDisplayList(station.Store(), ObjectList(), ObjectListColumns())
    , rsQueueDisplay(station.Store(),
                     {.table = QStringLiteral("Queue-Display"),
                      .join = QStringLiteral("LEFT JOIN Queue ON [Queue-Display].q_Id = Queue.q_Id "
                                             "LEFT JOIN Display ON [Queue-Display].d_Id = Display.d_Id"),
                      .where = QStringLiteral("Queue.q_Id=?"),
                      .canAdd = false},
                     ServiceCounterColumns())
    , rsPlanView(station.Store(),
                 {.table = QStringLiteral("ScanPlan"),
                  .join = QStringLiteral("INNER JOIN Display ON Display.d_Id = ScanPlan.d_Id"),
                  .order = QStringLiteral("ScanPlan.[Order]"),
                  .canAdd = false,
                  .canRemove = false},
                 PlanColumns())
    , rsHubs(station.Store(), ObjectList(QStringLiteral("Display.d_Type=3")), HubColumns())
    , rsFreeCounters(station.Store(), ObjectList(QStringLiteral("Display.d_Type<>3 AND Display.d_HubId=0")),
                     FreeCounterColumns())
    , rsHubCounters(station.Store(), ObjectList(QStringLiteral("Display.d_HubId=?")), HubCounterColumns())
    , assignments(station.Store())
    , m_station(station) {
    rsQueueDisplay.SetValues({0});
    rsHubCounters.SetValues({QVariant()});
    m_changed.setSingleShot(true);
    m_changed.setInterval(0);
    connect(&m_changed, &QTimer::timeout, this, &SetupRecords::StoreChanged);

    for (const GridRecords* records : {&rsQueue, &rsDisplay, &rsPlanView})
        connect(records, &GridModel::RecordsChanged, this, [this] { m_station.NoteStoreChanged(); });
    connect(&rsQueue, &GridModel::RecordsChanged, this, [this] { RequeryServiceCounters(); });
    connect(&rsDisplay, &GridModel::RecordsChanged, this, [this] {
        RequeryServiceCounters();
        RequeryPlan();
        RequeryHubs();
    });
    connect(&rsDisplay, &GridModel::RecordRemoved, this, &SetupRecords::UpdateAll);
    // A name that is typed in the plan is the object's. The plan itself stays as it is: its editor may be open.
    connect(&rsPlanView, &GridModel::RecordsChanged, this, [this] {
        Requery(rsDisplay);
        Requery(rsDisplayList);
        RequeryServiceCounters();
        RequeryHubs();
    });
    connect(&rsQueueDisplay, &GridModel::RecordsChanged, this, &SetupRecords::NoteChange);
    connect(&m_station, &Station::RowsChanged, this, [this] {
        Requery(rsQueue);
        UpdateAll();
        if (rsDisplay.RecordCount() == 0)
            directions.Clear();
        else if (directions.IsChanged())
            directions.ReloadUnderChoices(rsDisplay, m_station.Model());
        else
            LoadDirectionGrid();
    });
}

void SetupRecords::Load() {
    Requery(rsQueue);
    Requery(rsDisplay);
    RequeryPlan();
    RequeryHubs();
    LoadDirectionGrid();
}

void SetupRecords::Requery(GridRecords& records) {
    if (const Result<> read = records.Requery(); !read && m_station.Store().IsOpen())
        m_station.Log().WriteLog(tr("Setup: a list could not be read: %1").arg(read.Error()), EventLog::Error);
}

void SetupRecords::LoadQueueDisplay(qint32 serviceId) {
    rsQueueDisplay.SetValues({serviceId});
    Requery(rsQueueDisplay);
}

void SetupRecords::LoadHubCounters(qint32 hubId) {
    rsHubCounters.SetValues({hubId == 0 ? QVariant() : QVariant(hubId)});
    Requery(rsHubCounters);
}

void SetupRecords::LoadDirectionGrid() {
    directions.LoadDirectionGrid(rsDisplay, m_station.Model());
}

void SetupRecords::RequeryServiceCounters() {
    Requery(rsQueueDisplay);
    NoteChange();
}

void SetupRecords::RequeryPlan() {
    Requery(rsPlanView);
    Requery(rsDisplayList);
    NoteChange();
}

void SetupRecords::RequeryHubs() {
    Requery(rsHubs);
    Requery(rsFreeCounters);
    Requery(rsHubCounters);
    NoteChange();
}

void SetupRecords::UpdateAll() {
    RequeryServiceCounters();
    Requery(rsDisplay);
    RequeryPlan();
    RequeryHubs();
}

void SetupRecords::NoteChange() {
    m_changed.start();
}
