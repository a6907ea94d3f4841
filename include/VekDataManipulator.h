// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"
#include "VekDCData.h"
#include "VekErrorCode.h"

#include <memory>

class VekDataManipulatorPrivate;
class VekDiffPulseVoltammetryElement;
class VekNormalPulseVoltammetryElement;
class VekSquareWaveVoltammetryElement;

/// The kinds of pulse voltammetry that VekDataManipulator tells apart.
enum VekPulseType {
    DifferentialPulse = 0, ///< VekDiffPulseVoltammetryElement
    NormalPulse = 1,       ///< VekNormalPulseVoltammetryElement
    SquarewavePulse = 2,   ///< VekSquareWaveVoltammetryElement
};

/**
 * Reduces the samples of a pulse experiment to one pair of levels for each pulse.
 *
 * Feed it every sample of the pulse element, in order; whenever a pulse is complete, read its levels:
 *
 *     VekDataManipulator manipulator(element);
 *     ...
 *     manipulator.loadPrimaryData(data);
 *     if (manipulator.isPulseCompleted())
 *         plot(manipulator.getBaseVoltage(), manipulator.getPulseCurrent() - manipulator.getBaseCurrent());
 *
 * isPulseCompleted() stays true while samples of the same level go on to arrive; the levels are those of the last one.
 * Copies share their state.
 *
 * @thread Use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekDataManipulator
{
public:
    /// For normal pulses without width and period: call setPulseType() before the first sample.
    VekDataManipulator();
    /// For the data of a differential pulse element, with its width and period.
    explicit VekDataManipulator(const VekDiffPulseVoltammetryElement &element);
    /// For the data of a normal pulse element, with its width and period.
    explicit VekDataManipulator(const VekNormalPulseVoltammetryElement &element);
    /// For the data of a square-wave element, with its frequency.
    explicit VekDataManipulator(const VekSquareWaveVoltammetryElement &element);
    /// Copies share their state, which ends with the last of them.
    ~VekDataManipulator();

    /**
     * Prepares for the data of differential or normal pulses and forgets all levels.
     *
     * @param pulseWidth  duration of a pulse in seconds
     * @param pulsePeriod time from one pulse to the next in seconds
     * @return VekErrorCode::SendFailed with a message for SquarewavePulse; nothing has then changed
     */
    VekErrorCode setPulseType(VekPulseType type, double pulseWidth, double pulsePeriod);
    /**
     * Prepares for the data of a square wave and forgets all levels.
     *
     * @param frequency hertz
     * @return VekErrorCode::SendFailed with a message for the other two types; nothing has then changed
     */
    VekErrorCode setPulseType(VekPulseType type, double frequency);

    /// Duration of a pulse in seconds; 0.0 until it is set.
    double getPulseWidth() const;
    /// Time from one pulse to the next in seconds; 0.0 until it is set.
    double getPulsePeriod() const;
    /// Frequency of the square wave in hertz; 0.0 until it is set.
    double getFrequency() const;

    /// Takes the next sample. The time of the first one is where the pulses begin to count.
    void loadPrimaryData(const VekDCData &data);

    /// Whether the levels are those of a complete pulse.
    bool isPulseCompleted() const;
    /// Current in amperes at the last sample of the base level.
    double getBaseCurrent() const;
    /// Current in amperes at the last sample of the pulse level.
    double getPulseCurrent() const;
    /// Potential in volts at the last sample of the base level.
    double getBaseVoltage() const;
    /// Potential in volts at the last sample of the pulse level.
    double getPulseVoltage() const;

private:
    std::shared_ptr<VekDataManipulatorPrivate> _private;
};
