#include "calc/pulsefit.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Tools {

namespace {

constexpr double widthPerSigma = 2.3548200450309493;
constexpr double narrowestWidth = 0.3; // points; narrower ones look alike
constexpr double reachInWidths = 2.5;  // of what is fitted around the pulse
constexpr int mostRounds = 25;
constexpr double farthest = 4; // widths by which a fit may leave its begin, in time and in delay

constexpr double knownWidths = 1.5; // by which time and width may differ from the search, scatter
constexpr double knownDelay = 4;    // the same of the delay over the band

constexpr double weakWidening = 10; // of errors, over the square of S/N

constexpr std::size_t unknowns = 4; // height, point, dispersion, width
using Vector = std::array<double, unknowns>;
using Matrix = std::array<Vector, unknowns>;

struct Equations {
    Matrix matrix = {};
    Vector right = {};
    double squares = 0; // of what the shape leaves of the samples, less those of the samples
};

// The mean of exp(-x^2 / 2 sigma^2) over a step, and its derivatives by the centre and by sigma.
struct StepMean {
    double value;
    double byPoint;
    double bySigma;
};

StepMean stepMean(double offset, double sigma)
{
    const double from = (offset - 0.5) / sigma;
    const double to = (offset + 0.5) / sigma;
    const double atFrom = std::exp(-from * from / 2);
    const double atTo = std::exp(-to * to / 2);
    const double root = std::sqrt(M_PI / 2);
    const double area = root * (std::erf(to / M_SQRT2) - std::erf(from / M_SQRT2));
    return {sigma * area, atFrom - atTo, area - to * atTo + from * atFrom};
}

Equations samplesOf(const PulseBands &bands, const PulseShape &shape, double reach)
{
    Equations equations;
    const double sigma = shape.fwhm / widthPerSigma;
    for (std::size_t band = 0; band < bands.samples.size(); ++band) {
        const double centre = shape.point + bands.delays[band] * shape.dispersion;
        const int first = int(std::max(0.0, std::floor(centre - reach)));
        const int end = int(std::min(double(bands.count), std::ceil(centre + reach) + 1));
        for (int i = first; i < end; ++i) {
            const double sample = double(bands.samples[band][i]);
            if (sample == 0)
                continue;
            const StepMean mean = stepMean(i - centre, sigma);
            const double rest = sample - shape.height * mean.value;
            const Vector by = {mean.value, shape.height * mean.byPoint,
                               shape.height * mean.byPoint * bands.delays[band],
                               shape.height * mean.bySigma / widthPerSigma};
            equations.squares += rest * rest - sample * sample;
            for (std::size_t r = 0; r < unknowns; ++r) {
                equations.right[r] += by[r] * rest;
                for (std::size_t c = 0; c <= r; ++c)
                    equations.matrix[r][c] += by[r] * by[c];
            }
        }
    }
    return equations;
}

// Cholesky's way: the lower half becomes L with L L^T the matrix.
bool decompose(Matrix &matrix)
{
    for (std::size_t r = 0; r < unknowns; ++r) {
        for (std::size_t c = 0; c <= r; ++c) {
            double rest = matrix[r][c];
            for (std::size_t k = 0; k < c; ++k)
                rest -= matrix[r][k] * matrix[c][k];
            if (r == c && !(rest > 0))
                return false;
            matrix[r][c] = r == c ? std::sqrt(rest) : rest / matrix[c][c];
        }
    }
    return true;
}

Vector solved(const Matrix &lower, Vector right)
{
    for (std::size_t r = 0; r < unknowns; ++r) {
        for (std::size_t k = 0; k < r; ++k)
            right[r] -= lower[r][k] * right[k];
        right[r] /= lower[r][r];
    }
    for (std::size_t r = unknowns; r-- > 0;) {
        for (std::size_t k = r + 1; k < unknowns; ++k)
            right[r] -= lower[k][r] * right[k];
        right[r] /= lower[r][r];
    }
    return right;
}

// What the search tells already: the pulse is near its boxcar and about as wide. Without it, time
// and width of a pulse that lies within one sample have no bounds.
void addKnown(const PulseShape &shape, const PulseShape &begin, double spread, Equations &equations)
{
    const double width = std::max(1.0, begin.fwhm);
    const Vector apart = {0, shape.point - begin.point, shape.dispersion - begin.dispersion,
                          shape.fwhm - begin.fwhm};
    const Vector scatter = {0, knownWidths * width, spread > 0 ? knownDelay * width / spread : 0,
                            knownWidths * width};
    for (std::size_t k = 1; k < unknowns; ++k) {
        if (scatter[k] == 0)
            continue;
        const double weight = 1 / (scatter[k] * scatter[k]);
        equations.matrix[k][k] += weight;
        equations.right[k] -= weight * apart[k];
        equations.squares += weight * apart[k] * apart[k];
    }
}

// What is not fitted gets an equation of its own.
void fixDispersion(Equations &equations)
{
    for (std::size_t k = 0; k < unknowns; ++k)
        (k < 2 ? equations.matrix[2][k] : equations.matrix[k][2]) = 0;
    equations.matrix[2][2] = 1;
    equations.right[2] = 0;
}

PulseShape moved(const PulseShape &shape, const Vector &by)
{
    return {shape.height + by[0], shape.point + by[1], shape.dispersion + by[2],
            std::max(narrowestWidth, shape.fwhm + std::clamp(by[3], -shape.fwhm / 2, shape.fwhm))};
}

double spreadOf(const PulseBands &bands)
{
    const auto [least, most] = std::minmax_element(bands.delays.begin(), bands.delays.end());
    return bands.delays.empty() ? 0 : *most - *least;
}

bool isNear(const PulseShape &shape, const PulseShape &begin, double spread)
{
    const double width = std::max(1.0, begin.fwhm);
    return shape.height > 0 && std::abs(shape.point - begin.point) < farthest * width &&
           std::abs(shape.dispersion - begin.dispersion) * spread < farthest * width &&
           shape.fwhm < farthest * width;
}

// Standard deviations and covariance from the inverse of the equations.
void addErrors(Equations equations, bool fitsDispersion, PulseFit &fit)
{
    if (!fitsDispersion)
        fixDispersion(equations);
    if (!decompose(equations.matrix))
        return;
    const std::array<double *, unknowns> errors = {&fit.error.height, &fit.error.point,
                                                   &fit.error.dispersion, &fit.error.fwhm};
    // The samples follow the shape in a straight line only near it; simulated pulses scatter the
    // more beyond that the weaker they are: 14 % at an S/N of 9, 4 % at 15.
    const double widening = 1 + weakWidening / std::max(weakWidening, -equations.squares);
    for (std::size_t k = 0; k < unknowns; ++k) {
        Vector one = {};
        one[k] = 1;
        const Vector column = solved(equations.matrix, one);
        *errors[k] = std::sqrt(column[k]) * widening;
        if (k == 1 && fitsDispersion)
            fit.pointWithDispersion = column[2] * widening * widening;
    }
    if (!fitsDispersion)
        fit.error.dispersion = 0;
    fit.isFitted = true;
}

} // namespace

double snrAtWrongDelay(double widths)
{
    const double zeta = std::sqrt(std::log(2.0)) * std::abs(widths);
    return zeta < 1e-6 ? 1 : std::sqrt(M_PI) / 2 * std::erf(zeta) / zeta;
}

PulseFit fitPulse(const PulseBands &bands, const PulseShape &begin, bool fitsDispersion)
{
    PulseFit fit;
    fit.shape = begin;
    const double reach = reachInWidths * std::max(1.0, begin.fwhm) + 3;
    const double spread = spreadOf(bands);
    const auto equationsOf = [&](const PulseShape &shape) {
        Equations of = samplesOf(bands, shape, reach);
        addKnown(shape, begin, spread, of);
        return of;
    };
    double damping = 1e-3;
    Equations equations = equationsOf(fit.shape);
    for (int round = 0; round < mostRounds; ++round) {
        Equations damped = equations;
        if (!fitsDispersion)
            fixDispersion(damped);
        for (std::size_t k = 0; k < unknowns; ++k)
            damped.matrix[k][k] *= 1 + damping;
        if (!decompose(damped.matrix))
            break;
        const PulseShape next = moved(fit.shape, solved(damped.matrix, damped.right));
        const Equations after = equationsOf(next);
        if (!isNear(next, begin, spread) || after.squares > equations.squares) {
            damping *= 10;
            continue;
        }
        const bool isDone = equations.squares - after.squares < 1e-5;
        fit.shape = next;
        equations = after;
        damping = std::max(1e-9, damping / 10);
        if (isDone)
            break;
    }
    addErrors(equations, fitsDispersion, fit);
    return fit;
}

} // namespace Tools
