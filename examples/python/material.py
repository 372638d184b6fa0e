"""A tension test of rubber, as a picture: Ogden's model beside the neo-Hookean one of the same shear modulus.

    PYTHONPATH=build/release/python python3 examples/python/material.py      # writes material.svg

Constants of natural rubber: R. W. Ogden, Proc. R. Soc. Lond. A 326 (1972) 565.
"""
import numpy as np
import sharedanalysis as sa

n = 101
stretch = np.linspace(1, 7, n)
alpha = np.array([1.3, 5.0, -2.0])
mu = np.array([0.618e6, 0.00118e6, -0.00981e6]) * alpha / 2  # the library's moduli: their sum is the shear modulus
K = 2e12  # as good as incompressible

def tension(mu, alpha):
    """Stress of the undeformed area."""
    fill = lambda value: np.full(n, value)
    terms = [fill(value) for pair in zip(mu, alpha) for value in pair]
    lateral, flag = np.zeros(n), np.zeros(n)
    result = sa.SPX_MAT_HYPEROGDENUNIEXP(*terms, fill(K / 2), fill(0.0), fill(0.0), stretch, lateral, flag)
    assert not flag.any() and np.isfinite(result.stress).all()
    return result.stress * lateral**2

ogden = tension(mu, alpha)
neo_hooke = tension([mu.sum(), 0, 0], [2.0, 1.0, 1.0])
closed = mu.sum() * (stretch - stretch**-2)
print(f"shear modulus {mu.sum() / 1e6:.4f} MPa; at stretch 7: Ogden {ogden[-1] / 1e6:.3f} MPa, neo-Hooke {neo_hooke[-1] / 1e6:.3f} MPa")
print(f"neo-Hooke from its closed form of an incompressible rubber: {np.abs(neo_hooke - closed).max() / closed.max():.1e}")
assert np.abs(neo_hooke - closed).max() < 1e-5 * closed.max()

def curve(values, colour):
    points = " ".join(f"{40 + 60 * (x - 1):.1f},{260 - 55 * y / 1e6:.1f}" for x, y in zip(stretch, values))
    return f'<polyline fill="none" stroke="{colour}" stroke-width="2" points="{points}"/>'

open("material.svg", "w").write(f"""<svg xmlns="http://www.w3.org/2000/svg" width="430" height="290" font-size="12">
<path d="M40 20V260H420" fill="none" stroke="#888"/>
{curve(ogden, "#246")}{curve(neo_hooke, "#c60")}
<text x="300" y="70" fill="#246">Ogden</text><text x="330" y="150" fill="#c60">neo-Hooke</text>
<text x="46" y="28">stress, 0 to 4 MPa</text><text x="330" y="280">stretch, 1 to 7</text>
</svg>
""")
