// The published loops in the published order, arrays counted from 1 as in print. Two things are added: pythag ends for
// not-a-numbers, and the search for a small subdiagonal element ends at the last row whatever stands there.
#include "tests/definition/eigen.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace studystats::definition {
namespace {

struct Vector {
  double* data;
  double& operator()(int i) const { return data[i - 1]; }
};

template <class Real>
struct Table {
  Real* data;
  std::ptrdiff_t rows;
  Real& operator()(int i, int j) const { return data[(i - 1) + (j - 1) * rows]; }
};

double sign(double magnitude, double x) { return x >= 0.0 ? magnitude : -magnitude; }

// "Form p", "form q": e becomes q. (tred1 and tred2 share these statements word for word.)
void formQ(Vector d, Vector e, double h, int l) {
  double f = 0.0;
  for (int j = 1; j <= l; ++j) {
    e(j) = e(j) / h;
    f = f + e(j) * d(j);
  }
  const double hh = f / (h + h);
  for (int j = 1; j <= l; ++j) e(j) = e(j) - hh * d(j);
}

// "Form a*u" in e, from the lower triangle.
template <class Real>
void formProduct(Table<Real> a, Vector d, Vector e, int l) {
  for (int j = 1; j <= l; ++j) e(j) = 0.0;
  for (int j = 1; j <= l; ++j) {
    const double f = d(j);
    double g = e(j) + a(j, j) * f;
    for (int k = j + 1; k <= l; ++k) {
      g = g + a(k, j) * d(k);
      e(k) = e(k) + a(k, j) * f;
    }
    e(j) = g;
  }
}

// One sweep of QL over rows l...m; rotate(i, c, s) where the published tql2 says "form vector".
template <class Rotate>
void sweep(Vector d, Vector e, int n, int l, int m, double* f, Rotate rotate) {
  const int l1 = l + 1;
  double g = d(l);
  double p = (d(l1) - g) / (2.0 * e(l));
  const double one = 1.0;
  double r = pythag(&p, &one);
  d(l) = e(l) / (p + sign(r, p));
  d(l1) = e(l) * (p + sign(r, p));
  const double dl1 = d(l1);
  double h = g - d(l);
  for (int i = l1 + 1; i <= n; ++i) d(i) = d(i) - h;
  *f = *f + h;
  p = d(m);
  double c = 1.0, c2 = c, c3 = c;
  const double el1 = e(l1);
  double s = 0.0, s2 = 0.0;
  for (int i = m - 1; i >= l; --i) {
    c3 = c2;
    c2 = c;
    s2 = s;
    g = c * e(i);
    h = c * p;
    r = pythag(&p, &e(i));
    e(i + 1) = s * r;
    s = e(i) / r;
    c = p / r;
    p = c * d(i) - s * g;
    d(i + 1) = h + s * (c * g + s * d(i));
    rotate(i, c, s);
  }
  p = -s * s2 * c3 * el1 * e(l) / dl1;
  e(l) = s * p;
  d(l) = c * p;
}

// The loop over eigenvalues that tql1 and tql2 share; found(l, value) at the place of "d(l) + f".
template <class Rotate, class Found>
void ql(int n, Vector d, Vector e, std::int32_t* ierr, Rotate rotate, Found found) {
  for (int i = 2; i <= n; ++i) e(i - 1) = e(i);
  double f = 0.0, tst1 = 0.0;
  e(n) = 0.0;
  for (int l = 1; l <= n; ++l) {
    int j = 0;
    const double h = std::fabs(d(l)) + std::fabs(e(l));
    if (tst1 < h) tst1 = h;
    int m = l;
    while (m < n && tst1 + std::fabs(e(m)) != tst1) ++m;
    if (m != l) {
      double tst2 = 0.0;
      do {
        if (j == 30) {
          *ierr = l;
          return;
        }
        ++j;
        sweep(d, e, n, l, m, &f, rotate);
        tst2 = tst1 + std::fabs(e(l));
      } while (tst2 > tst1);
    }
    found(l, d(l) + f);
  }
}

}  // namespace

double pythag(const double* a, const double* b) {
  if (std::isnan(*a) || std::isnan(*b) || (std::isinf(*a) && std::isinf(*b)))
    return std::numeric_limits<double>::quiet_NaN();
  double p = std::fmax(std::fabs(*a), std::fabs(*b));
  if (p == 0.0) return p;
  double r = std::fmin(std::fabs(*a), std::fabs(*b)) / p;
  r = r * r;
  for (;;) {
    const double t = 4.0 + r;
    if (t == 4.0) return p;
    const double s = r / t;
    const double u = 1.0 + 2.0 * s;
    p = u * p;
    r = (s / u) * (s / u) * r;
  }
}

void tred1(const std::int32_t* nm, const std::int32_t* n, double* aData, double* dData, double* eData, double* e2Data) {
  const Table<double> a{aData, *nm};
  const Vector d{dData}, e{eData}, e2{e2Data};
  for (int i = 1; i <= *n; ++i) {
    d(i) = a(*n, i);
    a(*n, i) = a(i, i);
  }
  for (int i = *n; i >= 1; --i) {
    const int l = i - 1;
    double h = 0.0, scale = 0.0;
    for (int k = 1; k <= l; ++k) scale = scale + std::fabs(d(k));
    if (scale == 0.0) {
      for (int j = 1; j <= l; ++j) {
        d(j) = a(l, j);
        a(l, j) = a(i, j);
        a(i, j) = 0.0;
      }
      e(i) = 0.0;
      e2(i) = 0.0;
      continue;
    }
    for (int k = 1; k <= l; ++k) {
      d(k) = d(k) / scale;
      h = h + d(k) * d(k);
    }
    e2(i) = scale * scale * h;
    const double f = d(l);
    const double g = -sign(std::sqrt(h), f);
    e(i) = scale * g;
    h = h - f * g;
    d(l) = f - g;
    if (l != 1) {
      formProduct(a, d, e, l);
      formQ(d, e, h, l);
      for (int j = 1; j <= l; ++j)
        for (int k = j; k <= l; ++k) a(k, j) = a(k, j) - d(j) * e(k) - e(j) * d(k);
    }
    for (int j = 1; j <= l; ++j) {
      const double u = d(j);
      d(j) = a(l, j);
      a(l, j) = a(i, j);
      a(i, j) = u * scale;
    }
  }
}

void tred2(const std::int32_t* nm, const std::int32_t* n, const double* aData, double* dData, double* eData,
           double* zData) {
  const Table<const double> a{aData, *nm};
  const Table<double> z{zData, *nm};
  const Vector d{dData}, e{eData};
  for (int i = 1; i <= *n; ++i) {
    for (int j = i; j <= *n; ++j) z(j, i) = a(j, i);
    d(i) = a(*n, i);
  }
  for (int i = *n; i >= 2; --i) {
    const int l = i - 1;
    double h = 0.0, scale = 0.0;
    if (l >= 2)
      for (int k = 1; k <= l; ++k) scale = scale + std::fabs(d(k));
    if (scale == 0.0) {
      e(i) = d(l);
      for (int j = 1; j <= l; ++j) {
        d(j) = z(l, j);
        z(i, j) = 0.0;
        z(j, i) = 0.0;
      }
    } else {
      for (int k = 1; k <= l; ++k) {
        d(k) = d(k) / scale;
        h = h + d(k) * d(k);
      }
      const double f = d(l);
      const double g = -sign(std::sqrt(h), f);
      e(i) = scale * g;
      h = h - f * g;
      d(l) = f - g;
      for (int j = 1; j <= l; ++j) z(j, i) = d(j);
      formProduct(z, d, e, l);
      formQ(d, e, h, l);
      for (int j = 1; j <= l; ++j) {
        const double u = d(j), q = e(j);
        for (int k = j; k <= l; ++k) z(k, j) = z(k, j) - u * e(k) - q * d(k);
        d(j) = z(l, j);
        z(i, j) = 0.0;
      }
    }
    d(i) = h;
  }
  for (int i = 2; i <= *n; ++i) {
    const int l = i - 1;
    z(*n, l) = z(l, l);
    z(l, l) = 1.0;
    const double h = d(i);
    if (h != 0.0) {
      for (int k = 1; k <= l; ++k) d(k) = z(k, i) / h;
      for (int j = 1; j <= l; ++j) {
        double g = 0.0;
        for (int k = 1; k <= l; ++k) g = g + z(k, i) * z(k, j);
        for (int k = 1; k <= l; ++k) z(k, j) = z(k, j) - g * d(k);
      }
    }
    for (int k = 1; k <= l; ++k) z(k, i) = 0.0;
  }
  for (int i = 1; i <= *n; ++i) {
    d(i) = z(*n, i);
    z(*n, i) = 0.0;
  }
  z(*n, *n) = 1.0;
  e(1) = 0.0;
}

void tql1(const std::int32_t* n, double* dData, double* eData, std::int32_t* ierr) {
  *ierr = 0;
  if (*n == 1) return;
  const Vector d{dData}, e{eData};
  const auto place = [&](int l, double p) {
    int i = l;
    for (; i >= 2; --i) {
      if (p >= d(i - 1)) break;
      d(i) = d(i - 1);
    }
    d(i) = p;
  };
  ql(
      *n, d, e, ierr, [](int, double, double) {}, place);
}

void tql2(const std::int32_t* nm, const std::int32_t* n, double* dData, double* eData, double* zData,
          std::int32_t* ierr) {
  *ierr = 0;
  if (*n == 1) return;
  const Vector d{dData}, e{eData};
  const Table<double> z{zData, *nm};
  const auto formVector = [&](int i, double c, double s) {
    for (int k = 1; k <= *n; ++k) {
      const double h = z(k, i + 1);
      z(k, i + 1) = s * z(k, i) + c * h;
      z(k, i) = c * z(k, i) - s * h;
    }
  };
  ql(*n, d, e, ierr, formVector, [&](int l, double value) { d(l) = value; });
  if (*ierr != 0) return;
  for (int i = 1; i < *n; ++i) {
    int k = i;
    double p = d(i);
    for (int j = i + 1; j <= *n; ++j)
      if (d(j) < p) {
        k = j;
        p = d(j);
      }
    if (k == i) continue;
    d(k) = d(i);
    d(i) = p;
    for (int j = 1; j <= *n; ++j) std::swap(z(j, i), z(j, k));
  }
}

void eigSym(const std::int32_t* nm, const std::int32_t* n, double* a, double* w, const std::int32_t* wantVectors,
            double* z, double* work1, double* work2, std::int32_t* ierr) {
  *ierr = 10 * *n;
  if (*n > *nm) return;
  if (*wantVectors != 0) {
    tred2(nm, n, a, w, work1, z);
    tql2(nm, n, w, work1, z, ierr);
    const Table<double> vectors{z, *nm};
    for (int k = 1; k <= *n / 2; ++k)
      for (int i = 1; i <= *nm; ++i) std::swap(vectors(i, k), vectors(i, *n + 1 - k));
  } else {
    tred1(nm, n, a, w, work1, work2);
    tql1(n, w, work1, ierr);
  }
  for (int k = 1; k <= *n / 2; ++k) std::swap(w[k - 1], w[*n - k]);
}

}  // namespace studystats::definition
