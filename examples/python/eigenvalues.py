"""Principal values of a million tensors, beside numpy.linalg: time and accuracy.

    PYTHONPATH=build/release/python python3 examples/python/eigenvalues.py [COUNT]
"""
import sys
import threading
import time

import numpy as np
import sharedanalysis as sa

n = int(float(sys.argv[1])) if len(sys.argv) > 1 else 1000000
S = np.asfortranarray(np.random.default_rng(1).standard_normal((n, 6)))  # S33: 11 22 33 12 23 13
M = S[:, (0, 3, 5, 3, 1, 4, 5, 4, 2)].reshape(n, 3, 3)


def timed(name, function):
    begin = time.perf_counter()
    result = function()
    print(f"{name:42s} {time.perf_counter() - begin:7.3f} s")
    return result


def in_threads(count):
    """Each thread has a part of the points, in arrays of its own."""
    parts = [np.asfortranarray(part) for part in np.array_split(S, count)]
    results = [None] * count
    def work(k):
        results[k] = sa.GLO_UTI_EIG33V(parts[k])
    begin = time.perf_counter()
    threads = [threading.Thread(target=work, args=(k,)) for k in range(count)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    print(f"{f'GLO_UTI_EIG33V, {count} threads':42s} {time.perf_counter() - begin:7.3f} s")
    return np.concatenate([result.P for result in results])


values, directions = timed("numpy.linalg.eigh", lambda: np.linalg.eigh(M))
timed("numpy.linalg.eigvalsh", lambda: np.linalg.eigvalsh(M))
P, V = timed("GLO_UTI_EIG33V, values and directions", lambda: sa.GLO_UTI_EIG33V(S))
timed("GLO_UTI_EIG33S, values", lambda: sa.GLO_UTI_EIG33S(S))
timed("GLO_UTI_EIG33ANAL, values in closed form", lambda: sa.GLO_UTI_EIG33ANAL(S))
assert (in_threads(2) == P).all()  # the same bits, however the points are split


def residual(P, V):
    """|M V - V P| / |M|, the largest of all points."""
    error = np.einsum("nab,nbc->nac", M, V) - V * P[:, None, :]
    return (np.abs(error).max(axis=(1, 2)) / np.abs(M).max(axis=(1, 2))).max()


print(f"largest residual: numpy {residual(values, directions):.1e}, library {residual(P, V):.1e}")
difference = np.abs(np.sort(P, 1) - values).max(axis=1) / np.abs(values).max(axis=1)
print(f"largest difference of values: {difference.max():.1e} of the largest")
assert difference.max() < 1e-14
