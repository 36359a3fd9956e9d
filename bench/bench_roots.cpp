// The Bernstein-polygon root solvers on [0, 1], next to lib2geom's Bernstein
// root finder on the same polynomials, in the same run.
//
// Names follow Family/type/Impl for report.py: Roots/quintic/... and
// Roots/degree11/..., 4000 polynomials each. Impls:
//   QorMath  FindQuinticRoots (open interval) and FindDegree11Roots, which take
//            the power basis
//   2geom    Geom::find_bernstein_roots (subdivision, secant refinement on), which
//            takes the Bernstein form; the conversion is done before timing and
//            the result vector is reused (2geom still allocates its own scratch
//            on every call)
//
// Every polynomial is built from its roots: real roots inside (0, 1), at least
// 0.01 apart and from the ends, real roots outside [0, 1], and complex pairs
// close to it, times a leading coefficient of either sign. The coefficients are
// expanded in long double and rounded once; the reference roots are the chosen
// roots polished by Newton's method in long double on the rounded coefficients,
// so they are the roots of the very polynomial every solver sees.
//
// Agreement with the reference, computed once before timing, is reported as
// counters: roots (found per polynomial), missed and extra (over the whole set;
// a found root matches the nearest unmatched reference root within 1e-6) and
// max_err (the largest distance of a matched root from its reference).

#include <benchmark/benchmark.h>

#include <algorithm>
#include <initializer_list>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "bezier/roots.h"

#ifdef QORMATH_BENCH_2GEOM
#include <2geom/solver.h>
#endif

namespace {

constexpr size_t kCount = 4000;
constexpr uint64_t kSeed = 0x5eed2024;
constexpr int kMaxDegree = 11;
constexpr double kMatch = 1e-6;

struct Polynomial {
    double power[kMaxDegree + 1];      // highest power first, as the solvers take it
    double bernstein[kMaxDegree + 1];  // b0..bn on [0, 1]
    std::vector<double> roots;         // reference roots in (0, 1), ascending
};

struct Set {
    int degree;
    std::vector<Polynomial> polys;
};

// p(t) and p'(t) in long double, coefficients highest first.
void Evaluate(const double* c, int n, long double t, long double& p, long double& dp) {
    p = c[0];
    dp = 0;
    for (int i = 1; i <= n; ++i) {
        dp = dp * t + p;
        p = p * t + c[i];
    }
}

long double Polish(const double* c, int n, long double t) {
    for (int i = 0; i < 50; ++i) {
        long double p, dp;
        Evaluate(c, n, t, p, dp);
        if (dp == 0) break;
        const long double step = p / dp;
        t -= step;
        if (std::fabs(step) <= 1e-19L * std::fabs(t)) break;
    }
    return t;
}

Set MakeSet(int degree, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> inside(0.01, 0.99), below(-1.5, -0.005), above(1.005, 2.5);
    std::uniform_real_distribution<double> re(-0.5, 1.5), im(0.05, 0.5), lead(0.5, 2.0);
    std::bernoulli_distribution coin(0.5);
    std::uniform_int_distribution<int> pairs(0, degree / 4 + 1);

    Set set{degree, {}};
    while (set.polys.size() < kCount) {
        // Expanded lowest power first: start from the leading coefficient and
        // multiply in one factor at a time.
        std::vector<long double> q{coin(rng) ? lead(rng) : -lead(rng)};
        const auto multiply = [&q](std::initializer_list<long double> f) {  // f lowest power first
            std::vector<long double> r(q.size() + f.size() - 1, 0.0L);
            for (size_t i = 0; i < q.size(); ++i) {
                size_t j = 0;
                for (long double fj : f) r[i + j++] += q[i] * fj;
            }
            q = r;
        };
        std::vector<double> chosen;
        const int complexPairs = pairs(rng);
        for (int k = 0; k < complexPairs; ++k) {
            const long double a = re(rng), b = im(rng);
            multiply({a * a + b * b, -2 * a, 1});
        }
        for (int k = 2 * complexPairs; k < degree; ++k) {
            double r;
            if (coin(rng)) {
                r = inside(rng);
                chosen.push_back(r);
            } else {
                r = coin(rng) ? below(rng) : above(rng);
            }
            multiply({-static_cast<long double>(r), 1});
        }
        std::sort(chosen.begin(), chosen.end());
        bool apart = true;
        for (size_t i = 1; i < chosen.size(); ++i) apart = apart && chosen[i] - chosen[i - 1] >= 0.01;
        if (!apart) continue;

        Polynomial p{};
        for (int i = 0; i <= degree; ++i) p.power[i] = double(q[size_t(degree - i)]);
        // b_i = sum over j <= i of C(i, j) / C(n, j) * a_j, a_j the rounded
        // coefficient of t^j.
        for (int i = 0; i <= degree; ++i) {
            long double b = 0, cij = 1, cnj = 1;  // C(i, j), C(n, j) for j = 0
            for (int j = 0; j <= i; ++j) {
                b += cij / cnj * p.power[degree - j];
                cij = cij * (i - j) / (j + 1);
                cnj = cnj * (degree - j) / (j + 1);
            }
            p.bernstein[i] = double(b);
        }
        for (double r : chosen) {
            const long double t = Polish(p.power, degree, r);
            p.roots.push_back(std::fabs(t - r) < 1e-6L ? double(t) : r);
        }
        set.polys.push_back(p);
    }
    return set;
}

// ---- Solvers ---------------------------------------------------------------------

int OursSolve(const Set& set, const Polynomial& p, double* roots) {
    return set.degree == 5 ? QorMath::FindQuinticRoots(p.power, roots, false)
                           : QorMath::FindDegree11Roots(p.power, roots);
}

// ---- Agreement -------------------------------------------------------------------

struct Agreement {
    double found = 0, missed = 0, extra = 0, maxError = 0;
};

void Compare(const std::vector<double>& reference, std::vector<double> found, Agreement& a) {
    a.found += double(found.size());
    std::vector<bool> used(found.size(), false);
    for (double r : reference) {
        size_t best = found.size();
        for (size_t i = 0; i < found.size(); ++i)
            if (!used[i] && std::fabs(found[i] - r) <= kMatch &&
                (best == found.size() || std::fabs(found[i] - r) < std::fabs(found[best] - r)))
                best = i;
        if (best == found.size()) {
            a.missed += 1;
            continue;
        }
        used[best] = true;
        a.maxError = std::max(a.maxError, std::fabs(found[best] - r));
    }
    a.extra += double(std::count(used.begin(), used.end(), false));
}

template <typename Solve>
Agreement Agree(const Set& set, Solve solve) {
    Agreement a;
    for (const Polynomial& p : set.polys) Compare(p.roots, solve(p), a);
    a.found /= double(set.polys.size());
    return a;
}

void Finish(benchmark::State& s, size_t polys, const Agreement& a) {
    s.SetItemsProcessed(int64_t(s.iterations()) * int64_t(polys));
    s.counters["roots"] = a.found;
    s.counters["missed"] = a.missed;
    s.counters["extra"] = a.extra;
    s.counters["max_err"] = a.maxError;
}

void Register(const std::string& type, const Set* set) {
    const auto reg = [](const std::string& name, auto fn) {
        benchmark::RegisterBenchmark(name.c_str(), fn)->Unit(benchmark::kMicrosecond);
    };
    const std::string base = "Roots/" + type + "/";

    const Agreement ours = Agree(*set, [set](const Polynomial& p) {
        double roots[kMaxDegree + 2];
        return std::vector<double>(roots, roots + OursSolve(*set, p, roots));
    });
    reg(base + "QorMath", [=](benchmark::State& s) {
        double roots[kMaxDegree + 2];
        for (auto _ : s) {
            int64_t n = 0;
            for (const Polynomial& p : set->polys) {
                n += OursSolve(*set, p, roots);
                benchmark::DoNotOptimize(roots);
            }
            benchmark::DoNotOptimize(n);
        }
        Finish(s, set->polys.size(), ours);
    });

#ifdef QORMATH_BENCH_2GEOM
    const auto geom = [set](const Polynomial& p, std::vector<double>& roots) {
        roots.clear();
        Geom::find_bernstein_roots(p.bernstein, unsigned(set->degree), roots, 0, 0.0, 1.0, true);
    };
    const Agreement theirs = Agree(*set, [&geom](const Polynomial& p) {
        std::vector<double> roots;
        geom(p, roots);
        return roots;
    });
    reg(base + "2geom", [=](benchmark::State& s) {
        std::vector<double> roots;
        roots.reserve(kMaxDegree + 2);
        for (auto _ : s) {
            int64_t n = 0;
            for (const Polynomial& p : set->polys) {
                geom(p, roots);
                n += int64_t(roots.size());
                benchmark::DoNotOptimize(roots.data());
            }
            benchmark::DoNotOptimize(n);
        }
        Finish(s, set->polys.size(), theirs);
    });
#endif
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    static const Set quintic = MakeSet(5, kSeed);
    static const Set degree11 = MakeSet(11, kSeed + 1);
    Register("quintic", &quintic);
    Register("degree11", &degree11);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
