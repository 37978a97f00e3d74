#include <cmath>
#include <cstddef>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

constexpr double kSqrt2 = 1.4142135623730951;
constexpr double kOneOverSqrt2Pi = 0.3989422804014327;

// A quotient of two polynomials of degree 7, highest power first.
struct Rational {
    double numerator[8];
    double denominator[8];
};

double Ratio(const Rational& r, double t)
{
    return Horner<7>(r.numerator, t) / Horner<7>(r.denominator, t);
}

// Coefficients of PPND16, published with algorithm AS 241.
constexpr Rational kCentral{
    {2.5090809287301226727e3, 3.3430575583588128105e4, 6.7265770927008700853e4,
     4.5921953931549871457e4, 1.3731693765509461125e4, 1.9715909503065514427e3,
     1.3314166789178437745e2, 3.3871328727963666080e0},
    {5.2264952788528545610e3, 2.8729085735721942674e4, 3.9307895800092710610e4,
     2.1213794301586595867e4, 5.3941960214247511077e3, 6.8718700749205790830e2,
     4.2313330701600911252e1, 1.0}};
constexpr Rational kMiddle{
    {7.74545014278341407640e-4, 2.27238449892691845833e-2, 2.41780725177450611770e-1,
     1.27045825245236838258e0, 3.64784832476320460504e0, 5.76949722146069140550e0,
     4.63033784615654529590e0, 1.42343711074968357734e0},
    {1.05075007164441684324e-9, 5.47593808499534494600e-4, 1.51986665636164571966e-2,
     1.48103976427480074590e-1, 6.89767334985100004550e-1, 1.67638483018380384940e0,
     2.05319162663775882187e0, 1.0}};
constexpr Rational kFar{
    {2.01033439929228813265e-7, 2.71155556874348757815e-5, 1.24266094738807843860e-3,
     2.65321895265761230930e-2, 2.96560571828504891230e-1, 1.78482653991729133580e0,
     5.46378491116411436990e0, 6.65790464350110377720e0},
    {2.04426310338993978564e-15, 1.42151175831644588870e-7, 1.84631831751005468180e-5,
     7.86869131145613259100e-4, 1.48753612908506148525e-2, 1.36929880922735805310e-1,
     5.99832206555887937690e-1, 1.0}};

}  // namespace

// Method  Wichura (1988), Algorithm AS 241 (PPND16), Applied Statistics 37, 477-484.
double MCDistFun::probit(const double& p)
{
    if (!(p > 0.0 && p < 1.0)) return MCMV::Missing();  // written so that a NaN fails it
    const double q = p - 0.5;
    if (q == 0.0) return 0.0;  // exact: p is the double 0.5
    if (std::fabs(q) <= 0.425) return q * Ratio(kCentral, 0.180625 - q * q);

    const double r = std::sqrt(-std::log(q < 0.0 ? p : 1.0 - p));
    const double x = r <= 5.0 ? Ratio(kMiddle, r - 1.6) : Ratio(kFar, r - 5.0);
    return q < 0.0 ? -x : x;
}

// Method  piecewise polynomials of degree 12: |x| times one in x^2 below 2.2, 1 - y^16 below 6.9.
// Source  T. Ooura, derf of his package of gamma and error functions (1996), with its two tables.
// On purpose a NaN counts as large.
double MCDistFun::derf(const double& x)
{
    // A block a piece.
    // clang-format off
    static constexpr double a[65] = {
        5.958930743e-11, -1.13739022964e-9, 1.466005199839e-8, -1.635035446196e-7,
        1.6461004480962e-6, -1.492559551950604e-5, 1.2055331122299265e-4, -8.548326981129666e-4,
        0.00522397762482322257, -0.0268661706450773342, 0.11283791670954881569,
        -0.37612638903183748117, 1.12837916709551257377,

        2.372510631e-11, -4.5493253732e-10, 5.90362766598e-9, -6.642090827576e-8,
        6.7595634268133e-7, -6.21188515924e-6, 5.10388300970969e-5, -3.7015410692956173e-4,
        0.00233307631218880978, -0.0125498847718219221, 0.05657061146827041994,
        -0.2137966477645600658, 0.84270079294971486929,

        9.49905026e-12, -1.8310229805e-10, 2.39463074e-9, -2.721444369609e-8,
        2.8045522331686e-7, -2.61830022482897e-6, 2.195455056768781e-5, -1.6358986921372656e-4,
        0.00107052153564110318, -0.00608284718113590151, 0.02986978465246258244,
        -0.13055593046562267625, 0.67493323603965504676,

        3.82722073e-12, -7.421598602e-11, 9.793057408e-10, -1.126008898854e-8,
        1.1775134830784e-7, -1.1199275838265e-6, 9.62023443095201e-6, -7.404402135070773e-5,
        5.0689993654144881e-4, -0.00307553051439272889, 0.01668977892553165586,
        -0.08548534594781312114, 0.56909076642393639985,

        1.55296588e-12, -3.032205868e-11, 4.0424830707e-10, -4.71135111493e-9,
        5.011915876293e-8, -4.8722516178974e-7, 4.30683284629395e-6, -3.445026145385764e-5,
        2.4879276133931664e-4, -0.00162940941748079288, 0.00988786373932350462,
        -0.05962426839442303805, 0.49766113250947636708};
    static constexpr double b[65] = {
        -2.9734388465e-10, 2.69776334046e-9, -6.40788827665e-9, -1.6678201321e-8,
        -2.1854388148686e-7, 2.66246030457984e-6, 1.612722157047886e-5, -2.5616361025506629e-4,
        1.5380842432375365e-4, 0.00815533022524927908, -0.01402283663896319337,
        -0.19746892495383021487, 0.71511720328842845913,

        -1.951073787e-11, -3.2302692214e-10, 5.22461866919e-9, 3.42940918551e-9,
        -3.5772874310272e-7, 1.9999935792654e-7, 2.687044575042908e-5, -1.1843240273775776e-4,
        -8.0991728956032271e-4, 0.00661062970502241174, 0.00909530922354827295,
        -0.2016007277849101314, 0.51169696718727644908,

        3.147682272e-11, -4.8465972408e-10, 6.3675740242e-10, 3.377623323271e-8,
        -1.5451139637086e-7, -2.03340624738438e-6, 1.947204525295057e-5, 2.854147231653228e-5,
        -0.00101565063152200272, 0.00271187003520095655, 0.02328095035422810727,
        -0.16725021123116877197, 0.32490054966649436974,

        2.31936337e-11, -6.303206648e-11, -2.64888267434e-9, 2.050708040581e-8,
        1.1371857327578e-7, -2.11211337219663e-6, 3.68797328322935e-6, 9.823686253424796e-5,
        -6.5860243990455368e-4, -7.5285814895230877e-4, 0.02585434424202960464,
        -0.11637092784486193258, 0.18267336775296612024,

        -3.67789363e-12, 2.0876046746e-10, -1.93319027226e-9, -4.35953392472e-9,
        1.8006992266137e-7, -7.8441223763969e-7, -6.75407647949153e-6, 8.428418334440096e-5,
        -1.7604388937031815e-4, -0.0023972961143507161, 0.0206412902387602297,
        -0.06905562880005864105, 0.09084526782065478489};
    // clang-format on

    const double w = std::fabs(x);
    double y = 1.0;
    if (w == 0.0) return 0.0;
    if (w < 2.2) {
        const double square = w * w;
        const double piece = std::floor(square);
        y = w * Horner<12>(a + 13 * static_cast<std::ptrdiff_t>(piece), square - piece);
    } else if (w < 6.9) {
        const double piece = std::floor(w);
        double power = Horner<12>(b + 13 * (static_cast<std::ptrdiff_t>(piece) - 2), w - piece);
        power *= power;
        power *= power;
        power *= power;
        y = 1.0 - power * power;
    }
    return x < 0.0 ? -y : y;
}

// Method  t P(t - 1/2) exp(-x^2), t = c / (|x| + c), with the product formed as a logarithm.
// Source  T. Ooura, derfc of his package of gamma and error functions (1996).
// Departs from the source by the floor of the logarithm, and by 1.0 at zero.
double MCDistFun::derfc(const double& x)
{
    static constexpr double kScale = 3.97886080735226;
    // clang-format off
    static constexpr double kP[23] = {
        0.00127109764952614092, 1.19314022838340944e-4, -0.003963850973605135,
        -8.70779635317295828e-4, 0.00773672528313526668, 0.00383335126264887303,
        -0.0127223813782122755, -0.0133823644533460069, 0.0161315329733252248,
        0.0390976845588484035, 0.00249367200053503304, -0.0838864557023001992,
        -0.119463959964325415, 0.0166207924969367356, 0.357524274449531043,
        0.805276408752910567, 1.18902982909273333, 1.37040217682338167,
        1.31314653831023098, 1.07925515155856677, 0.774368199119538609,
        0.490165080585318424, 0.275374741597376782};
    // clang-format on

    const double w = std::fabs(x);
    if (w <= 0.0) return 1.0;
    const double t = kScale / (w + kScale);
    const double y = t * Horner<22>(kP, t - 0.5);
    const double tail = y <= 0.0 ? 0.0 : ExpOrZero(std::log(y) - w * w);
    return x < 0.0 ? 2.0 - tail : tail;
}

// Method  derf for z > 0, derfc for z < 0: the lower tail keeps its relative accuracy.
double MCDistFun::prbnrm(const double& z)
{
    if (z > 0.0) return (derf(z / kSqrt2) + 1.0) * 0.5;
    if (z < 0.0) return derfc(z / -kSqrt2) * 0.5;
    return z == 0.0 ? 0.5 : z;
}

double MCDistFun::CdfStdNorm(double z) { return prbnrm(z); }

double MCDistFun::CdfNorm(double x, double mu, double sigma)
{
    if (!(sigma > 0.0)) return MCMV::Missing();
    return prbnrm((x - mu) / sigma);
}

double MCDistFun::IdfStdNorm(double p)
{
    if (!(p > 0.0 && p < 1.0)) return MCMV::Missing();
    if (p == 0.5) return 0.0;  // exact, and without a call of probit
    return probit(p);
}

double MCDistFun::IdfNorm(double p, double mu, double sigma)
{
    if (!(p > 0.0 && p < 1.0) || !(sigma > 0.0)) return MCMV::Missing();
    if (p == 0.5) return mu;  // exact, and without a call of probit
    const double z = probit(p);
    return MCMV::IsMissing(z) ? z : sigma * z + mu;
}

double MCDistFun::PdfNormalStandard(double z) { return std::exp((z * -0.5) * z) * kOneOverSqrt2Pi; }

double MCDistFun::PdfNormal(double x, double mu, double sigma)
{
    if (sigma == 0.0) return MCMV::Missing();
    // On purpose negative for a negative sigma.
    return PdfNormalStandard((x - mu) / sigma) / sigma;
}

}  // namespace MCMath_850
