#pragma once

#include "simulator/SimulatedDevice.h"

#include <functional>
#include <map>
#include <vector>

/// A ticket printer: takes button table, service rows, form, logos and letters, and gives tickets when it is polled.
class TicketPrinter final : public SimulatedDevice {
public:
    struct ServiceRow {
        int SeriesIndex = 0;
        QByteArray Name;        ///< without its padding
        QByteArray Description; ///< without its padding
        bool operator==(const ServiceRow&) const = default;
    };

    struct Ticket {
        int Button = 0;  ///< the pressed key; -1 for a test print
        int Service = 0; ///< its place in the button table; -1 for a test print
        int Number = 0;
        bool operator==(const Ticket&) const = default;
    };

    /// Transfers beyond this many bytes are cut off and count as bad.
    static constexpr qsizetype LargestBlock = 65535;

    using SimulatedDevice::SimulatedDevice;

    /// Called when the closing `N` of a load has come; not at its retry.
    std::function<void()> OnLoaded;
    /// Called when a ticket has been printed.
    std::function<void(const Ticket&)> OnPrinted;

    /// The keys of the last `K`, in service order; nothing before the first one.
    const std::optional<std::vector<quint8>>& Buttons() const { return m_buttons; }
    /// "1" of a full load or "!" of a start-up load, as the last `K` told.
    char LoadFlag() const { return m_loadFlag; }
    /// By service index, since the last `K`.
    const std::map<int, ServiceRow>& ServiceRows() const { return m_rows; }
    /// The good form last taken, empty if there is none.
    const QByteArray& Form() const { return m_form; }
    /// The logo block last taken whole.
    const QByteArray& Logos() const { return m_logos; }
    /// Letters or font last taken.
    const QByteArray& Letters() const { return m_letters; }
    const std::vector<Ticket>& PrintedTickets() const { return m_tickets; }
    /// How many loads were closed by `N`.
    int LoadsFinished() const { return m_loads; }
    /// The six flags of the reply to `P`: service table, button table, form, letters, scheduler, XON.
    QByteArray Flags() const;

    /// A customer presses a key: the next `Q` that brings a number for its series answers with
    /// the ticket. False if the button table has no such key.
    bool PressButton(quint8 button);

    Answer Handle(char letter, const QByteArray& data) override;
    /// `R` and `U` set the clock.
    void Hear(char letter, const QByteArray& data) override;
    QString Summary() const override;
    void PowerUp() override;
    void Forget() override;

protected:
    void AddState(QJsonObject& state) const override;

private:
    /// A block that comes in chunks between a begin and an end command.
    struct Transfer {
        bool Running = false;
        bool Overrun = false;
        QByteArray Bytes;

        void Begin();
        void Take(const QByteArray& data);
        bool End();
    };

    void Print(const Ticket& ticket);
    /// A command without data.
    Answer HandleBare(char letter);
    Answer TakeButtons(const QByteArray& data);
    Answer TakeRow(const QByteArray& data);
    Answer EndForm(const QByteArray& data);
    Answer Poll(const QByteArray& data);

    std::optional<std::vector<quint8>> m_buttons;
    char m_loadFlag = '0';
    std::map<int, ServiceRow> m_rows;
    int m_announcedForm = 0;
    Transfer m_formTransfer;
    Transfer m_logoTransfer;
    Transfer m_letterTransfer;
    QByteArray m_form;
    QByteArray m_logos;
    QByteArray m_letters;
    std::vector<quint8> m_pressed;
    std::vector<Ticket> m_tickets;
    int m_loads = 0;
};
