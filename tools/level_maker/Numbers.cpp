#include "Numbers.h"

#include <cmath>

namespace ql::maker {
namespace {

double sineSeries(double x) {  // |x| <= pi/4
  const double q = x * x;
  return x * (1.0 + q * (-1.0 / 6.0 +
                         q * (1.0 / 120.0 + q * (-1.0 / 5040.0 +
                                                 q * (1.0 / 362880.0 + q * (-1.0 / 39916800.0 + q / 6227020800.0))))));
}

double cosineSeries(double x) {
  const double q = x * x;
  return 1.0 + q * (-0.5 + q * (1.0 / 24.0 +
                                q * (-1.0 / 720.0 + q * (1.0 / 40320.0 + q * (-1.0 / 3628800.0 + q / 479001600.0)))));
}

double arcTangentSeries(double x) {  // |x| <= tan(pi/8)
  const double q = x * x;
  double sum = 0.0;
  for (int k = 33; k >= 1; k -= 2) sum = 1.0 / k - q * sum;
  return x * sum;
}

}  // namespace

double sine(double radians) {
  const double quarter = std::floor(radians / (kPi / 2.0) + 0.5);
  const double rest = radians - quarter * (kPi / 2.0);
  switch (static_cast<long long>(quarter) & 3) {
    case 0:
      return sineSeries(rest);
    case 1:
      return cosineSeries(rest);
    case 2:
      return -sineSeries(rest);
    default:
      return -cosineSeries(rest);
  }
}

double cosine(double radians) { return sine(radians + kPi / 2.0); }

double angleOf(double y, double x) {
  const double ax = std::fabs(x);
  const double ay = std::fabs(y);
  if (ax == 0.0 && ay == 0.0) return 0.0;
  const bool steep = ay > ax;
  double t = steep ? ax / ay : ay / ax;
  double angle = 0.0;
  if (t > 0.41421356237309503) {  // tan(a) with a above pi/8: use tan(a - pi/4)
    t = (t - 1.0) / (t + 1.0);
    angle = kPi / 4.0;
  }
  angle += arcTangentSeries(t);
  if (steep) angle = kPi / 2.0 - angle;
  if (x < 0.0) angle = kPi - angle;
  return y < 0.0 ? -angle : angle;
}

double exponential(double x) {
  constexpr double kLn2 = 0.693147180559945309417;
  if (x < -700.0) return 0.0;
  const double whole = std::floor(x / kLn2 + 0.5);
  const double rest = x - whole * kLn2;
  double term = 1.0;
  double sum = 1.0;
  for (int k = 1; k <= 14; ++k) {
    term *= rest / k;
    sum += term;
  }
  return std::ldexp(sum, static_cast<int>(whole));
}

double logarithm(double x) {
  constexpr double kLn2 = 0.693147180559945309417;
  int exponent = 0;
  double mantissa = std::frexp(x, &exponent);  // [0.5, 1)
  if (mantissa < 0.70710678118654752) {
    mantissa *= 2.0;
    --exponent;
  }
  const double t = (mantissa - 1.0) / (mantissa + 1.0);
  const double q = t * t;
  double sum = 0.0;
  for (int k = 21; k >= 1; k -= 2) sum = 1.0 / k + q * sum;
  return 2.0 * t * sum + exponent * kLn2;
}

double power(double base, double exponent) { return base <= 0.0 ? 0.0 : exponential(exponent * logarithm(base)); }

}  // namespace ql::maker
