// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"
#include "VekErrorCode.h"

#include <QtCore/QString>

#include <memory>

struct ExperimentComplaint;

/// One reason why an instrument would refuse an experiment. A small value: copy it freely, use it on any thread.
class NIMBRELLE_EXPORT VekPlanComplaint
{
public:
    /// For containers only: a complaint about nothing.
    VekPlanComplaint();

    /**
     * The code with which an upload would fail: InvalidParameters for a broken limit, ImplausibleParameters for a value
     * that cannot be meant, ExperimentTooLarge. A value that breaks a limit may have one of each of the first two; an
     * upload fails with the code of the first.
     */
    VekErrorCode::ErrorCode code() const;
    /// Number of the element in the experiment, from 1, as VekExperimentNode has it; 0 for the experiment as a whole.
    int stepNumber() const;
    /// The value of the element, named as its getter without "get": "maxVoltage"; empty where no single one is to blame.
    QString property() const;
    /// What is wrong, for people: a line of the message of that upload.
    QString text() const;

private:
    friend class VekExperimentPlan;
    explicit VekPlanComplaint(const ExperimentComplaint &complaint);

    std::shared_ptr<const ExperimentComplaint> _complaint;
};
