#pragma once

#include "simulator/SimulatedDevice.h"

#include <map>
#include <vector>

/// A hub: relays `N` to the devices attached to it, after a `W` only to those that the list named.
class DeviceHub final : public SimulatedDevice {
public:
    static constexpr int MostMembers = 16;

    struct Member {
        int Type = 0;
        int Address = 0;
        bool operator==(const Member&) const = default;
    };

    using SimulatedDevice::SimulatedDevice;

    /// Joins a device to the hub's own line. The device must outlive the hub.
    void Attach(SimulatedDevice& device);

    /// The list of the last `W`; nothing before the first one.
    const std::optional<std::vector<Member>>& Members() const { return m_members; }
    /// The block of the last `L`, unescaped.
    const QByteArray& Configuration() const { return m_configuration; }
    /// The number of the last `K`.
    std::optional<int> Option() const { return m_option; }
    /// Between `J` "0" and `J` "1".
    bool InTransfer() const { return m_inTransfer; }
    /// The texts of `H`, by slot.
    const std::map<int, QByteArray>& SlotTexts() const { return m_slotTexts; }

    Answer Handle(char letter, const QByteArray& data) override;
    /// `R` and `U` set the clock.
    void Hear(char letter, const QByteArray& data) override;
    /// The meaning of the letter that an `N` carries, with the device's name.
    QString RelayedMeaning(const QByteArray& data) const;
    QString Summary() const override;
    void PowerUp() override;
    void Forget() override;

protected:
    void AddState(QJsonObject& state) const override;

private:
    Answer Relay(const QByteArray& data);
    Answer TakeMembers(const QByteArray& data);
    Answer TakeConfiguration(const QByteArray& data);
    SimulatedDevice* FindAttached(int address) const;

    std::vector<SimulatedDevice*> m_attached;
    std::optional<std::vector<Member>> m_members;
    QByteArray m_configuration;
    std::optional<int> m_option;
    bool m_inTransfer = false;
    std::map<int, QByteArray> m_slotTexts;
};
