#!/usr/bin/env python3
"""The constants of glo/kernel/vmath.h: minimax polynomials and constants split in parts, printed as C++.

Each polynomial p of degree n - 1 minimises the largest |weight (p - target)| on its interval.  The weights make that the
relative error of the function's result.  Remez's exchange in 60 digits; coefficients rounded to double at the end.
Needs mpmath.  The tests measure the errors of the rounded coefficients independently.
"""
from mpmath import mp, mpf, exp, log, sin, cos, asin, atanh, sqrt, pi, lu_solve, matrix, fabs, floor, ldexp, frexp

mp.dps = 60
GRID = 600  # points on which the extrema of the error are looked for


def remez(target, weight, low, high, count):
    """Coefficients c[0] .. c[count - 1] of the minimax polynomial on [low, high], and the largest weighted error."""
    low, high = mpf(low), mpf(high)
    middle, radius = (low + high) / 2, (high - low) / 2
    # Chebyshev's spacing; shifted off the ends, where a weight may vanish
    grid = [middle - radius * cos(pi * (k + mpf("0.5")) / GRID) for k in range(GRID)] + [high]
    grid = ([low] if weight(low) else []) + grid
    targets = [target(t) for t in grid]
    weights = [weight(t) for t in grid]
    chosen = [round((k + 0.5) * (len(grid) - 1) / (count + 1)) for k in range(count + 1)]
    for _ in range(60):
        system, right = matrix(count + 1), matrix(count + 1, 1)
        for row, k in enumerate(chosen):
            for power in range(count):
                system[row, power] = grid[k] ** power
            system[row, count] = (-1) ** row / weights[k]
            right[row] = targets[k]
        solution = lu_solve(system, right)
        c = [solution[power] for power in range(count)]
        errors = [w * (mp.polyval(c[::-1], t) - g) for t, g, w in zip(grid, targets, weights)]
        # the largest error of each run of one sign
        peaks = []
        for k, error in enumerate(errors):
            if peaks and (errors[peaks[-1]] > 0) == (error > 0):
                if fabs(error) > fabs(errors[peaks[-1]]):
                    peaks[-1] = k
            else:
                peaks.append(k)
        while len(peaks) > count + 1:  # drop the smaller end, which keeps the signs alternating
            peaks.pop(0 if fabs(errors[peaks[0]]) < fabs(errors[peaks[-1]]) else -1)
        if len(peaks) < count + 1:
            raise ArithmeticError("the error does not alternate")
        if peaks == chosen:
            return c, max(fabs(e) for e in errors)
        chosen = peaks
    raise ArithmeticError("no convergence")


def literal(x):
    """The double nearest to x as a hexadecimal literal."""
    text = float(x).hex()
    return text.replace("0x1.0000000000000p", "0x1p")


def show(name, comment, target, weight, low, high, count):
    c, error = remez(target, weight, low, high, count)
    print(f"// {comment}, error 2^{float(mp.log(error, 2)):.1f}")
    print(f"constexpr double {name}[] = {{{', '.join(literal(x) for x in c)}}};")


def parts(name, value, bits):
    """value as a sum of doubles; all but the last cut to so many bits, so that a product with a small integer is exact."""
    result = []
    for b in bits:
        exponent = frexp(value)[1] - b
        part = ldexp(floor(ldexp(value, -exponent)), exponent)
        result.append(part)
        value -= part
    result.append(value)
    print(f"// {name}: " + ", ".join(literal(x) for x in result))


# asin(s)/s, sin(r)/r and the like as functions of the square t; the limits at 0 are never asked for.
show("kExpCoefficients", "(e^r - 1 - r) / r^2", lambda r: (exp(r) - 1 - r) / r**2, lambda r: r**2 / exp(r),
     -log(2) / 2, log(2) / 2, 10)
show("kExpm1Coefficients", "(e^r - 1 - r - r^2 / 2) / r^3", lambda r: (exp(r) - 1 - r - r**2 / 2) / r**3,
     lambda r: r**3 / (exp(r) - 1), -log(2) / 2, log(2) / 2, 10)
show("kLogCoefficients", "(2 atanh(s) - 2 s) / s^3 in s^2", lambda t: (2 * atanh(sqrt(t)) - 2 * sqrt(t)) / sqrt(t)**3,
     lambda t: t and t * sqrt(t) / (2 * atanh(sqrt(t))), 0, (sqrt(2) - 1)**4, 7)
show("kNearLogCoefficients", "the same for 1 + f from 5/8 to 8/5", lambda t: (2 * atanh(sqrt(t)) - 2 * sqrt(t)) / sqrt(t)**3,
     lambda t: t and t * sqrt(t) / (2 * atanh(sqrt(t))), 0, mpf(9) / 169, 8)
show("kLog2Coefficients", "(2 atanh(s) - 2 s) / (s^3 ln 2) in s^2",
     lambda t: (2 * atanh(sqrt(t)) - 2 * sqrt(t)) / sqrt(t)**3 / log(2), lambda t: t and t * sqrt(t) / (2 * atanh(sqrt(t))),
     0, (sqrt(2) - 1)**4, 7)
show("kExp2Coefficients", "(2^r - 1 - r ln 2) / r^2", lambda r: (2**r - 1 - r * log(2)) / r**2, lambda r: r**2 / 2**r,
     -mpf("0.5"), mpf("0.5"), 10)
show("kSinCoefficients", "(sin(r) / r - 1) / r^2 in r^2", lambda t: (sin(sqrt(t)) / sqrt(t) - 1) / t,
     lambda t: t and t * sqrt(t) / sin(sqrt(t)), 0, (pi / 4)**2, 7)
show("kCosCoefficients", "(cos(r) - 1 + r^2 / 2) / r^4 in r^2", lambda t: (cos(sqrt(t)) - 1 + t / 2) / t**2,
     lambda t: t**2 / cos(sqrt(t)), 0, (pi / 4)**2, 6)
show("kAsinCoefficients", "(asin(s) / s - 1) / s^2 in s^2", lambda t: (asin(sqrt(t)) / sqrt(t) - 1) / t,
     lambda t: t and t * sqrt(t) / asin(sqrt(t)), 0, mpf("0.25"), 13)
parts("ln 2, 42 bits and the rest", log(2), [42])
parts("log10(2), 42 bits and the rest", log(2) / log(10), [42])
parts("log10(e), 32 bits and the rest", 1 / log(10), [32])
parts("pi / 2, twice 33 bits and the rest", pi / 2, [33, 33])
parts("pi, 53 bits and the rest", pi, [53])
