// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModel.h"

namespace ModelTables {
struct IdentityRow;
struct LimitRow;
struct RareLimitRow;
struct RangeRow;
struct ConstantRow;
} // namespace ModelTables

/// A model whose numbers are rows of ModelTables; each concrete class names its rows.
class CatalogueModel : public HardwareModel
{
public:
    signed char getDefaultStabilityRangeIndex() const override;
    QString hexFileName() const override;
    QString suitableFirmware() const override;
    bool sdCardHasCalData() const override;
    currentRange_t getEIScurrentRangeLimit(double frequency) const override;
    QList<currentRange_t> getCurrentRangeListForOffsetDriftCalibration() const override;

protected:
    explicit CatalogueModel(HardwareModel_t model) : CatalogueModel(model, model) {}
    /// A model that has its identity for itself and shares all other numbers with an earlier one.
    CatalogueModel(HardwareModel_t model, HardwareModel_t numbersOf);

private:
    void take(const ModelTables::IdentityRow &row);
    void take(const ModelTables::LimitRow &row);
    void take(const ModelTables::RareLimitRow &row);
    void take(const ModelTables::RangeRow &row);
    void take(const ModelTables::ConstantRow &row);

    HardwareModel_t _numbersOf;
    const ModelTables::IdentityRow *_identity; ///< never null, as the next one
    const ModelTables::RangeRow *_ranges;
};
