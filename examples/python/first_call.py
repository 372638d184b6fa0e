"""The shortest program: stresses of one block of rubber, a message, an error.

    PYTHONPATH=build/release/python python3 examples/python/first_call.py
"""
import numpy as np
import sharedanalysis as sa

n = 100
C10, zero, rD1 = np.full(n, 0.5e6), np.zeros(n), np.full(n, 25e6)
V = np.zeros((n, 6), order="F")  # left stretch: 11 22 33 12 23 13
V[:, :3] = 1
V[:, 0] += 0.01 * np.arange(n)
flag = np.zeros(n)  # is only ever set, never cleared
result = sa.SPX_MAT_HYPERPOLY3DEXP(C10, zero, zero, zero, zero, rD1, zero, V, flag)
print(f"stress of the last point: {result.stress[-1, 0]:.4e} Pa")

with sa.job("first_call"):  # first_call.msg, .log and .sta
    sa.glo_uti_CWrite(sa.GLO_UNIT_MESSAGE_FILE, 0, "Info", "%I points computed", [n], None, None)
    try:
        sa.glo_uti_CWrite(sa.GLO_UNIT_MESSAGE_FILE, 0, "Error", "the strain of point %I is %R", [n], [0.99], None)
    except sa.AnalysisError as error:
        print("error:", error)
