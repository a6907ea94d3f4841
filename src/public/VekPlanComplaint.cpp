// SPDX-License-Identifier: MIT
#include "VekPlanComplaint.h"

#include "elements/ExperimentComplaint.h"

VekPlanComplaint::VekPlanComplaint() : VekPlanComplaint(ExperimentComplaint{VekErrorCode::Success, 0, {}, {}})
{
}

VekPlanComplaint::VekPlanComplaint(const ExperimentComplaint &complaint)
    : _complaint(std::make_shared<const ExperimentComplaint>(complaint))
{
}

VekErrorCode::ErrorCode VekPlanComplaint::code() const
{
    return _complaint->code;
}

int VekPlanComplaint::stepNumber() const
{
    return _complaint->stepNumber;
}

QString VekPlanComplaint::property() const
{
    return _complaint->property;
}

QString VekPlanComplaint::text() const
{
    return _complaint->text;
}
