#pragma once

#include "simulator/SimulatedDevice.h"

/// A power supply: `G` with "77" switches on, `T` with "68" off.
class PowerUnit final : public SimulatedDevice {
public:
    using SimulatedDevice::SimulatedDevice;

    bool IsOn() const { return m_on; }

    Answer Handle(char letter, const QByteArray& data) override;
    QString Summary() const override;
    void PowerUp() override { m_on = false; }

protected:
    void AddState(QJsonObject& state) const override;

private:
    bool m_on = false;
};
