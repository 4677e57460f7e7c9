#pragma once

#include "station/LineTest.h"

/// Asks every address whether somebody is there, on the bus itself and behind hubs, and compares that with the model.
///
/// Devices of the model are asked at the full time-out, and once more if they are silent. The largest round trip of
/// theirs tells how long all other addresses are waited for; whatever comes from one of those that is no clear answer
/// is settled by asking it once more at the full time-out. What came behind a hub and could not be settled is told too,
/// since nothing in it says whose it was.
class AddressScan {
public:
    /// Addresses other than those of the model are waited for this many times the largest round trip, but not less than
    /// the shortest wait, nor more than the full time-out. Where no device of the model answers it is the full one.
    static constexpr int TimesLargest = 3;
    static constexpr std::chrono::milliseconds ShortestWait{60};
    /// Up to so many disturbed addresses are two devices at one address; more of them are a disturbed line.
    static constexpr int MostTwins = 2;

    enum class Kind : quint8 {
        Known,           ///< in the database, and answers
        Unknown,         ///< answers, and is not in the database
        Elsewhere,       ///< answers here, and the database has its address elsewhere
        Silent,          ///< in the database, and does not answer
        SilentDisplay,   ///< the same of a display, whose right it is
        BehindSilentHub, ///< in the database, and was not asked because its hub is silent
        Foreign,         ///< only answers come that are another device's, or too late for their question
        Twins,           ///< noise, bad sums or a second answer at this address and hardly any other
        Disturbed,       ///< noise or bad sums, as at other addresses
    };

    struct Row {
        quint8 address = 0;
        qint32 hubId = 0; ///< `d_Id` of the hub, 0 for the bus itself
        QString hubName;  ///< VNI
        QString name;     ///< of a device of the model, VNI
        Kind kind = Kind::Known;
    };

    struct Result {
        EchoFinding echo;      ///< with an echo that is not handled nothing is searched
        std::vector<Row> rows; ///< by address, those on the bus first, then hub by hub
        int asked = 0;         ///< addresses
    };

    /// Tells that an address is at its turn. @return false if the user wants no more.
    using Step = std::function<bool(quint8 address, int done, int total)>;

    /// The references must outlive the search.
    AddressScan(Inquiry& inquiry, const model::Installation& installation)
        : m_inquiry(inquiry)
        , m_installation(installation) {}

    /// @param behindHubs also behind each hub of the model that answers. The model must stay as it is meanwhile.
    QCoro::Task<AskingEnd> Run(bool behindHubs, Step step);

    /// What was found by the last run, or by the running one until now.
    const Result& Found() const { return m_result; }

    /// A device that was unknown is in the store now under this name.
    void NoteAdded(quint8 address, qint32 hubId, const QString& name);

    /// What a row means, for a user to read, with Unicode letters.
    static QString TextOf(const Row& row);
    static QString SummaryOf(const Result& result);

private:
    /// The bus itself, or what is behind one hub.
    struct Place {
        qint16 hub = -1; ///< object index
        qint32 hubId = 0;
        QString hubName;
        quint8 hubAddress = 0;
        std::chrono::milliseconds full = Bus::DirectTimeout; ///< time-out
    };

    Place PlaceOf(qint16 hub) const;
    QCoro::Task<AskingEnd> Search(Place place);
    QCoro::Task<AskingEnd> AskKnown(Place place, qint16 object);
    QCoro::Task<AskingEnd> AskOther(Place place, quint8 address, std::chrono::milliseconds timeout);
    QCoro::Task<AskingEnd> AskOnceMore(Place place, quint8 address);
    QCoro::Task<Hearing> Ask(Place place, quint8 address, std::chrono::milliseconds timeout);
    bool Answers(quint8 address, qint32 hubId) const;
    void Add(const Place& place, quint8 address, Kind kind, const QString& name = {});
    void Finish();

    Inquiry& m_inquiry;
    const model::Installation& m_installation;
    Step m_step;
    int m_total = 0;
    Result m_result;
    RoundTrips::Time m_largest{0};
    std::set<quint8> m_heard; ///< in the heads of what answered something else
    std::optional<std::pair<quint8, qint32>> m_lastAnswered;
    std::set<std::pair<quint8, qint32>> m_twice;
};
