// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"
#include "elements/Node.h"
#include "elements/NodeMakers.h"

/**
 * An impedance sweep at each potential of a staircase. The host describes the first two potentials; modify nodes make
 * the instrument step through the rest.
 */
class MottSchottkyElement : public BuilderElement<MottSchottkyElement, measuresDc, measuresAc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Mott-Schottky Experiment"); }
    QStringList GetCategory() const override { return {"Potentiostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double quietTime = 0.0; ///< 0 for none
    double quietTimeSampInterval = 1.0;
    double startingPotential = 0.0;
    bool startVoltageVsOCP = false;
    double endingPotential = 1.0;
    bool endVoltageVsOCP = false;
    double voltageStep = 10.0;
    double stepQuietTime = 0.0; ///< 0 for none
    double stepQuietSampInterval = 1.0;
    double startFrequency = 10.0;
    double endFrequency = 1.0;
    double stepsPerDecade = 10.0;
    double amplitude = 10.0;
    quint32 minCycles = 2;

private:
    void addSteps(NodeList &list) const;
    Node sweepAt(double potential) const;
    Node modifyNode(double next, int target, ModTarget_t what, int jump) const;
};
