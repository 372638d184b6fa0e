"""A bar of 8-node bricks, hit at one end: explicit dynamics in forty lines, with a picture.

    PYTHONPATH=build/release/python python3 examples/python/bar.py      # writes bar.svg

A rubber bar of 40 bricks, free at both ends, is struck at x = 0 with 1 m/s; the wave runs through it with sqrt(M/rho).
"""
import numpy as np
import sharedanalysis as sa

n, edge, rho = 40, 0.01, 1000.0
shear, bulk = 1e6, 2e6
layer = edge * np.array([(0, 0), (1, 0), (1, 1), (0, 1)])
x = np.array([(i * edge, y, z) for i in range(n + 1) for y, z in layer], order="F")  # nodes 1 to 4(n+1)
connectivity = np.array([[4*i, 4*i + 4, 4*i + 5, 4*i + 1, 4*i + 3, 4*i + 7, 4*i + 6, 4*i + 2] for i in range(n)])
x0, u, v = x.copy(), np.zeros_like(x), np.zeros_like(x)
mass = np.bincount(connectivity.ravel(), minlength=len(x)) * rho * edge**3 / 8
C10, rD1, zero = np.full(n, shear / 2), np.full(n, bulk / 2), np.zeros(n)

def bricks(x):
    """Gradient operators and volumes of all bricks."""
    X = np.asfortranarray(x[connectivity])  # gathered: brick, node, direction
    return sa.SPX_OPE_C3D8ROPER2(X, np.zeros(n))

start = bricks(x0)
v[:4, 0] = 1.0
dt = 0.3 * edge / np.sqrt((bulk + 4 / 3 * shear) / rho)
picture = []
for step in range(200):
    now = bricks(x0 + u)
    H = np.einsum("ekj,eki->eij", start.B, u[connectivity])  # du_i/dX_j
    F = np.eye(3) + H
    B = F @ F.transpose(0, 2, 1)
    V = sa.GLO_UTI_SQRTV(B[:, (0, 1, 2, 0, 1, 0), (0, 1, 2, 1, 2, 2)])
    flag = np.zeros(n)
    s = sa.SPX_MAT_HYPERPOLY3DEXP(C10, zero, zero, zero, zero, rD1, zero, V, flag).stress
    T = s[:, (0, 3, 5, 3, 1, 4, 5, 4, 2)].reshape(n, 3, 3)
    force = -np.einsum("eij,ekj->eki", T, now.B) * now.vol[:, None, None]
    nodal = np.zeros_like(u)
    np.add.at(nodal, connectivity, force)
    v += dt * nodal / mass[:, None]
    u += dt * v
    if step % 20 == 0:
        picture.append(v.reshape(n + 1, 4, 3)[:, :, 0].mean(axis=1))

momentum = (mass * v[:, 0]).sum() / (mass[:4] * 1.0).sum()
print(f"after {step + 1} increments: momentum {momentum:.12f} of the impact, fastest node {np.abs(v).max():.3f} m/s")
assert abs(momentum - 1) < 1e-10 and not flag.any()
lines = "".join(f'<polyline fill="none" stroke="#246" points="' +
                " ".join(f"{20 + 9*i},{55 + 40*k - 30*value:.1f}" for i, value in enumerate(row)) + '"/>\n'
                for k, row in enumerate(picture))
open("bar.svg", "w").write(f'<svg xmlns="http://www.w3.org/2000/svg" width="400" height="{40 * len(picture) + 40}">\n'
                           f'<text x="20" y="14" font-size="12">velocity along the bar, every 20 increments</text>\n{lines}</svg>\n')
