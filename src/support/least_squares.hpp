// Linear least squares over rows given one at a time: the solver behind the polynomial fits and
// the sine fits of the converter measurements.
//
// Each row holds `terms` basis values and the target value. Rows are gathered in blocks of 1024
// under a triangle that holds R and Qᵀw of the rows so far, and each full block is folded into it
// by Householder QR (Eigen), so nothing as large as the data is kept and badly scaled bases lose
// no more than QR loses. The solution is the least-squares one of least norm where the rows
// cannot tell every coefficient apart (a complete orthogonal decomposition of R).
#pragma once

#include <memory>
#include <vector>

namespace wavex {

class LeastSquares {
public:
    explicit LeastSquares(int terms);
    ~LeastSquares();
    LeastSquares(const LeastSquares&) = delete;
    LeastSquares& operator=(const LeastSquares&) = delete;

    // The row to fill before add(): terms basis values, then the target value.
    double* row() { return row_.data(); }
    void add();
    // The coefficients, one per basis value. `residualSquares`, when given, receives the sum of the
    // squared residuals of the solution (the last diagonal entry of R squared).
    std::vector<double> solve(double* residualSquares = nullptr);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    std::vector<double> row_;
};

}  // namespace wavex
