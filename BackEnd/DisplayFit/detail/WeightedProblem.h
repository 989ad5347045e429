#pragma once

#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/LeastSquares.h"

#include <array>
#include <memory>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// The residuals of a channel in standard deviations: each pair is turned and scaled so that the stated deviations,
/// where there are any, make it two independent numbers of deviation 1.
///
/// With a loss, the squares grow as c^2 log(1 + s / c^2) of a pair's square s: far points pull hardly more than near
/// ones. Each pair is scaled so that its plain square is the loss, which leaves a sum of squares.
class WeightedProblem : public LeastSquares {
public:
    /// @param model must outlive the problem
    /// @param isWeighted false for residuals as they are, whatever deviations are stated
    explicit WeightedProblem(const ChannelModel& model, bool isWeighted = true);

    /// Takes the weights from the stated deviations at the model's base. Points whose residuals these do not spread
    /// weigh as if they were not mapped.
    void weigh();
    /// 0 for none.
    void setLoss(double deviations) { m_loss = deviations; }
    /// Points that take no part; all do at first.
    void setLeftOut(std::vector<bool> leftOut) { m_leftOut = std::move(leftOut); }
    [[nodiscard]] bool isLeftOut(std::size_t point) const { return m_leftOut[point]; }

    [[nodiscard]] std::size_t unknowns() const override { return m_model.unknowns().size(); }
    [[nodiscard]] std::size_t residuals() const override { return 2 * m_model.points().size(); }
    bool evaluate(const double* unknowns, std::size_t first, std::size_t count, double* residuals,
                  double* jacobian) const noexcept override;
    void pulse() const override { m_model.points().pulseAt(0); }

    /// Returns the size of each pair at the base, without loss, of points that are left out, too; infinite where a
    /// point is not mapped.
    [[nodiscard]] std::vector<double> sizes() const;
    /// Calculates the pair of a point at the base and its two rows of derivatives, without loss, whether it is left out
    /// or not; false where it is not mapped.
    bool rowsOf(std::size_t point, double* pair, double* rows) const;

private:
    void whiten(std::size_t point, double* residuals, double* jacobian) const;
    void applyLoss(double* pair, double* rows) const;

    const ChannelModel& m_model;
    bool m_isWeighted;
    double m_loss = 0;
    std::vector<bool> m_leftOut;
    /// Lower triangles (xx, yx, yy) by which the pairs are multiplied; empty where no deviations are stated.
    std::vector<std::array<double, 3>> m_factors;
    std::unique_ptr<bool[]> m_isMapped;  ///< of one block, written by each evaluation
};

}  // namespace Veltrani::DisplayFitDetail
