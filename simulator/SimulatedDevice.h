#pragma once

#include "simulator/BusInstallation.h"
#include "simulator/Faults.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

/// One device behind the bus. Knows its own commands and what it holds; frames, retries and timing are the bus's.
class SimulatedDevice {
public:
    /// What a device makes of a command: the content of its reply (behind the letter), or silence and why.
    struct Answer {
        std::optional<QByteArray> Content;
        QString Silence;
    };

    explicit SimulatedDevice(BusDevice identity);
    virtual ~SimulatedDevice() = default;
    SimulatedDevice(const SimulatedDevice&) = delete;
    SimulatedDevice& operator=(const SimulatedDevice&) = delete;

    const BusDevice& Identity() const { return m_identity; }
    /// "printer 33 \"Second hall\"".
    QString Title() const;

    /// Carries the command out. A silent answer has changed nothing.
    virtual Answer Handle(char letter, const QByteArray& data) = 0;
    /// The same, with what is wrong with this device: silence, deafness, forgetfulness.
    Answer Carry(char letter, const QByteArray& data);
    /// Carries a broadcast out; a letter that is nothing to this device is passed over.
    virtual void Hear(char letter, const QByteArray& data);
    /// What the letter means to this class of device, empty if nothing.
    QString Meaning(char letter) const;
    /// What the device holds now, one line or more, each ended by a line feed.
    virtual QString Summary() const = 0;
    /// The same for programs, see `DeviceBus::State`.
    QJsonObject State() const;

    /// A silent device carries nothing out and answers nothing.
    bool IsSilent() const { return m_silent; }
    void SetSilent(bool silent) { m_silent = silent; }

    /// Commands that it swallows.
    void SetDeaf(std::vector<Deafness> deaf) { m_deaf = std::move(deaf); }
    /// Whether it keeps nothing of what it is told.
    void SetForgetful(bool forgetful) { m_forgetful = forgetful; }

    /// The device was off: its clock and what was just being sent to it are lost.
    virtual void PowerUp() { m_clock.clear(); }
    /// The device is as it left the factory.
    virtual void Forget() { PowerUp(); }

    /// The clock text last set, empty before. Seven characters, three at a counter.
    const QByteArray& ClockText() const { return m_clock; }

protected:
    /// Adds what this class of device holds.
    virtual void AddState(QJsonObject& state) const = 0;

    static Answer Reply(const QByteArray& content = {});
    static Answer UnknownLetter();
    /// Silence because the data has another length than the command asks for.
    static Answer WrongLength(const QByteArray& data);
    static Answer Refused(const QString& reason);
    /// Keeps the first `length` characters of a clock text.
    Answer SetClock(const QByteArray& data, qsizetype length);
    /// "2026-11-18 06:13:38", "06:13:38" for a time text, "not set".
    QString ClockSummary() const;

private:
    BusDevice m_identity;
    QByteArray m_clock;
    bool m_silent = false;
    bool m_forgetful = false;
    std::vector<Deafness> m_deaf;
};
