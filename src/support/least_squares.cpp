#include "support/least_squares.hpp"

// GCC 12 warns falsely inside its own AVX-512 intrinsics as Eigen uses them.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <Eigen/Dense>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

namespace wavex {

namespace {
constexpr Eigen::Index kBlock = 1024;
}  // namespace

// The top `kept` = terms + 1 rows of `rows` hold the triangle of [A | w] for the rows folded so
// far (zeros at first); new rows go under it.
struct LeastSquares::Impl {
    explicit Impl(Eigen::Index terms)
        : terms(terms), kept(terms + 1), rows(Eigen::MatrixXd::Zero(kept + kBlock, terms + 1)),
          qr(rows.rows(), rows.cols()), filled(kept) {}

    void fold() {
        qr.compute(rows.topRows(filled));
        rows.topRows(kept) = qr.matrixQR().topRows(kept).triangularView<Eigen::Upper>();
        filled = kept;
    }

    Eigen::Index terms, kept;
    Eigen::MatrixXd rows;
    Eigen::HouseholderQR<Eigen::MatrixXd> qr;
    Eigen::Index filled;
};

LeastSquares::LeastSquares(int terms) : impl_(std::make_unique<Impl>(terms)), row_(static_cast<size_t>(terms) + 1) {}

LeastSquares::~LeastSquares() = default;

void LeastSquares::add() {
    Impl& m = *impl_;
    for (Eigen::Index k = 0; k <= m.terms; ++k) m.rows(m.filled, k) = row_[static_cast<size_t>(k)];
    if (++m.filled == m.rows.rows()) m.fold();
}

std::vector<double> LeastSquares::solve(double* residualSquares) {
    Impl& m = *impl_;
    if (m.filled > m.kept) m.fold();
    Eigen::CompleteOrthogonalDecomposition<Eigen::MatrixXd> solver(m.rows.topLeftCorner(m.terms, m.terms));
    Eigen::VectorXd a = solver.solve(m.rows.col(m.terms).head(m.terms));
    if (residualSquares) {
        // Qᵀw beyond what the solution reaches: the last diagonal entry, plus the part of the first
        // `terms` entries a rank-deficient R leaves unexplained.
        const Eigen::VectorXd left = m.rows.col(m.terms).head(m.terms) - m.rows.topLeftCorner(m.terms, m.terms) * a;
        const double last = m.rows(m.terms, m.terms);
        *residualSquares = left.squaredNorm() + last * last;
    }
    return {a.data(), a.data() + a.size()};
}

}  // namespace wavex
