/** @file spx/tables.h
 *  Material tables, nodal forces and conductivity.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_TABLES_H
#define SHAREDANALYSIS_SPX_TABLES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Material tables
 *
 * Properties tabulated against temperature, field variables and state variables, looked up for a block of points.  A table
 * lies in two pools, one of integers and one of reals, which any number of tables share; a header of integers says where.
 * host/tables/material_table.h lays a table out; docs/material-tables.md shows one.  All positions count from 1.
 *
 *   option  table                                    header fields, from 1
 *   100     a constant                               1 position of the constant in the reals
 *   300     general, with a logarithmic and a        1 position of the record in the integers
 *           square-root variable                     5 number of the logarithmic variable, 0 none
 *   500     general, with a logarithmic variable     6 position of its reference value in the reals
 *                                                    7 number of the square-root variable, 0 none; 300 only
 *           all of them                              2, 3, 4 numbers of field variables, state variables and temperatures
 *   400     is rejected, and so is any other, and a general table with fewer than one variable: an "Error" is written,
 *           GLO_UTI_EXIT ends the analysis with code 20, and the outputs are left alone.  That does not depend on nblock.
 *
 *   record  1 rows   2 position of the rows in the reals   3 position of the groups in the integers   4 of the source codes
 *           5 variables   6 position of their columns in the integers   7 position of the running integrals in the reals, 0
 *           none   8 to 12 not read   13 position of the extrapolation flags in the reals
 *
 * Rows have 1 + (field variables + state variables + temperatures) entries and follow each other; entry 1 is the dependent
 * value.  Variable v = 1 .. variables has its abscissa in entry columns(v) of a row, a source code c(v) and two flags:
 *   c > 0   column c of the field variables; its derivative goes to that column of the field derivatives
 *   c < 0   column -c of the state variables; no derivative
 *   c = 0   the temperature; its derivative goes to the temperature derivative
 *   flags   below and above, entries 2 v - 1 and 2 v: greater than 0 continues the first or last interval as a straight line,
 *           otherwise the end value is held, with derivative 0
 *
 * One variable: rows ascend; value = (x2 - x)/(x2 - x1) f1 + (x - x1)/(x2 - x1) f2, derivative (f2 - f1)/(x2 - x1), in the
 * interval that SPX_GET_SEGFIND finds; computed as f1 + (x - x1) times the derivative.  A breakpoint returns its value exactly
 * and the derivative of the interval above it.  An interval without width gives the value of its upper row and derivative 0;
 * one row gives its value and derivative 0.  Where a derivative is beyond the largest double, values on its interval are NaN or
 * infinite.
 *
 * Several variables, any number: rows are sorted by the last variable, within it by the last but one and so on, variable 1
 * fastest.  The rows that agree in the variables from v on are a group of v; groups need not have the same breakpoints or
 * numbers of rows.  Up to 8 variables all points of a block descend together; of more, each point adds up the rows that bracket
 * it, as many as 2 to the number of variables, one by one.  The last variable's interval is searched among its groups, the next variable's within the two that bracket
 * it, and so on down to the rows, each as SPX_GET_SEGFIND does; the values are interpolated linearly on the way back.  On a
 * grid that is multilinear interpolation.  The groups in the integer pool are, for each variable from the last down to 2, their
 * number m and m + 1 numbers: the first member of each group, and one beyond the last.  Members are groups of variable v - 1,
 * for variable 2 rows; both are counted from 1 through the whole table.
 *
 * Transformed variables.  A logarithmic variable enters as log10 x where x > ref and as the integer part of log10 ref, toward
 * zero, where it is not: for ref = 0.05 as -1, for ref = 0.5 as 0.  ref is positive.  Its derivative is multiplied by
 * 0.43429448/x, and by 0 where x is cut off.  A square-root variable enters as its root, and its derivative is the one by the
 * root (divide it by twice the root for the one by x).  A variable that is both is first logarithmic.  Abscissas of the table
 * are those of the transformed variables.  The caller's arrays are not written: a transform leaves nothing to be put back, and
 * calls may share them.
 *
 * NaN in a variable gives NaN, as value and in all derivatives, except where the table is constant or the variable has one row
 * or group only.  Nothing is checked in the table itself: among rows that do not ascend, or with a NaN for an abscissa, a
 * bisection ends in one of the intervals, the same for a point alone and in any block; outside the interval its line goes on.  Transforms and interpolation run as vector
 * loops, and so does the search in up to 32 rows of one variable; longer tables and those of several variables are searched
 * point by point.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Value of a table, and its derivatives if derivatives is 1, at all points of a block.  Only the derivatives by variables of
 *  the table are written; a constant sets as many columns of the field derivatives as its header counts field variables, and
 *  the temperature derivative, to 0.  Two variables with the same source add up their derivatives.
 *  Arrays that the table does not name may be null.
 *  @param[in]     derivatives            (1), code 0|1: whether derivatives are returned as well; only 1 means yes
 *  @param[in]     ints                   (*), table: integer pool
 *  @param[in]     reals                  (*), table: real pool
 *  @param[in]     header                 (7), table: header of the table
 *  @param[in]     nblock                 (1), block: points
 *  @param[in]     option                 (1), code 100|300|500: option code
 *  @param[in]     fields                 (nblock, *), any: field variables
 *  @param[in]     states                 (nblock, *), any: state variables
 *  @param[in]     temperature            (nblock), any: temperature
 *  @param[out]    value                  (nblock), any: dependent value
 *  @param[in,out] fieldDerivatives       (nblock, *), any: derivatives by the field variables
 *  @param[in,out] temperatureDerivative  (nblock), any: derivative by the temperature
 */
void SPX_GET_GETVALUE(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                      const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                      const double* temperature, double* value, double* fieldDerivatives,
                      double* temperatureDerivative);

/** SPX_GET_GETVALUE under the name of the double-sized interface; reals are doubles in both.
 *  @like SPX_GET_GETVALUE
 */
void SPX_GET_GETVALUEDBL(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                         const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                         const double* temperature, double* value, double* fieldDerivatives,
                         double* temperatureDerivative);

/** SPX_GET_GETVALUE at the points of a list; the others are left alone.
 *  @like SPX_GET_GETVALUE
 *  @param[in]     count  (1), count: listed points; below 1 does nothing
 *  @param[in]     list   (count), list: their numbers
 */
void SPX_GET_GETVALUEINDX(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                          const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                          const double* temperature, double* value, double* fieldDerivatives,
                          double* temperatureDerivative, const int32_t* count, const int32_t* list);

/** SPX_GET_GETVALUE without derivatives.
 *  @like SPX_GET_GETVALUE
 */
void SPX_GET_GETVAL(const int32_t* ints, const double* reals, const int32_t* header, const int32_t* nblock,
                    const int32_t* option, const double* fields, const double* states, const double* temperature,
                    double* value);

/** SPX_GET_GETVALUE for tables of the table objects: the same layout; only the text about unknown options differs.
 *  @like SPX_GET_GETVALUE
 */
void SPX_TAB_GETVALUE(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                      const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                      const double* temperature, double* value, double* fieldDerivatives,
                      double* temperatureDerivative);

/** SPX_GET_GETVALUEINDX for tables of the table objects.
 *  @like SPX_GET_GETVALUEINDX
 */
void SPX_TAB_GETVALUEINDX(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                          const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                          const double* temperature, double* value, double* fieldDerivatives,
                          double* temperatureDerivative, const int32_t* count, const int32_t* list);

/** Integral of a table over its first variable, from the first abscissa to the point; negative below it.  Only the options
 *  300 and 500 have one; the other codes are rejected, 100 and 400 too.
 *    - The integral is that of the straight lines, and exact; beyond the table that of the continued line or held value.  A
 *      single row integrates as a constant from its abscissa.
 *    - A transformed variable is integrated as transformed: over log10 x, or over the root.  The latter is doubled:
 *      2 times the integral of f d(root x) is that of f(x)/root(x) dx.
 *    - Further variables are interpolated: the integrals of the bracketing groups, each from its own first abscissa.
 *    - The derivative by the first variable is the value of the table, with the factors of its transform; the others are the
 *      integrals of the derivatives.
 *  A table without running integrals is summed up for each point, at a cost that grows with the rows; both give the same bits.
 *  Running integrals: for each row the integral from the first row of its group of variable 1, by the trapezium rule, as
 *  0.5 (x2 - x1)(f1 + f2) added one after another.
 *  @like SPX_GET_GETVALUE
 *  @param[in]     option                 (1), code 300|500: option code
 *  @param[out]    value                  (nblock), any: integral
 */
void SPX_GET_INTEGRATE(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                       const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                       const double* temperature, double* value, double* fieldDerivatives,
                       double* temperatureDerivative);

/** SPX_GET_INTEGRATE at the points of a list; the others are left alone.
 *  @like SPX_GET_INTEGRATE
 *  @param[in]     count  (1), count: listed points; below 1 does nothing
 *  @param[in]     list   (count), list: their numbers
 */
void SPX_GET_INTEGRATEINDX(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                           const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                           const double* temperature, double* value, double* fieldDerivatives,
                           double* temperatureDerivative, const int32_t* count, const int32_t* list);

/** Lookup in regularly spaced tables, whose intervals are computed and not searched.
 *    option  dependencies  variables, first to last
 *    0       1, 2          field variables 1, or 1 and 2
 *    1       0, 1, 2       the temperature, then no, one or two field variables
 *  Any other pair returns and leaves the outputs alone.  For each variable, with s = (x - x0) rdx + 2,
 *    p = min(max(s - 1, 1), n), i1 = integer part of p, w = p - i1, i2 = integer part of min(max(s, 1), n):
 *  value = (1 - w) v(i1) + w v(i2), derivative = (v(i2) - v(i1)) rdx, one variable after the other.  The value is held beyond
 *  the ends, with derivative 0; at the last abscissa the derivative is 0 too.  A NaN gives NaN.
 *  Header: 1 position of x0 and rdx of each variable in the reals, two for each; 2 position of n and the row stride of each
 *  variable in the integers, two for each; 3 position of the values in the reals.  The value at point i of variable 1, j of
 *  variable 2 and so on is entry (i - 1) stride1 + (j - 1) stride2 + ... + 1 of the values.
 *  With a count of extra variables that is not 0 the header is that of a general table instead, which is evaluated without
 *  transforms; then all columns of the field derivatives are set, those of variables that the table does not have to 0.
 *  @like SPX_GET_GETVALUE
 *  @param[in]     header                 (7), table: header of the table
 *  @param[in]     option                 (1), code 0|1: whether the table depends on temperature
 *  @param[in]     dependencies           (1), code 1|2: field variables on which it depends, 0 to 2; any other does nothing
 *  @param[in]     extra                  (1), code 0|1: count of extra variables, any other as 1
 *  @param[in]     nfields                (1), count>=dependencies: columns of the field variables; below 1 counts as 1
 *  @param[in]     nstates                (1), count: columns of the state variables; below 1 counts as 1
 *  @param[in]     fields                 (nblock, nfields), any: field variables
 *  @param[in]     states                 (nblock, nstates), any: state variables
 *  @param[in,out] fieldDerivatives       (nblock, nfields), any: derivatives by the field variables
 */
void SPX_GET_GETTAB(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                    const int32_t* nblock, const int32_t* option, const int32_t* dependencies, const int32_t* extra,
                    const int32_t* nfields, const int32_t* nstates, const double* fields, const double* states,
                    const double* temperature, double* value, double* fieldDerivatives, double* temperatureDerivative);

/** The interval of x among the rows lo .. hi of one sorted column; the abscissa of row r is entry pos of that row.
 *    hi = lo: i1 = i2 = lo (a table without rows, hi below lo, too)
 *    below the first abscissa: (lo, lo + 1) if extrapBelow > 0, else (lo, lo)
 *    above the last abscissa: (hi - 1, hi) if extrapAbove > 0, else (hi, hi)
 *    else the interval by bisection; a breakpoint belongs to the one above it, the last abscissa to the last one
 *  @param[in]  lo           (1), -: first row, from 1
 *  @param[in]  hi           (1), -: last row
 *  @param[in]  extrapBelow  (1), -: greater than 0: extrapolate below
 *  @param[in]  extrapAbove  (1), -: greater than 0: extrapolate above
 *  @param[in]  rowlen       (1), -: entries of a row
 *  @param[in]  spare        (1), unread: not read
 *  @param[in]  table        (rowlen, *), any: the rows
 *  @param[in]  pos          (1), -: entry of the abscissa, from 1
 *  @param[in]  x            (1), any: what is searched; NaN ends in one of the intervals
 *  @param[out] i1           (1), -: lower row
 *  @param[out] i2           (1), -: upper row
 */
void SPX_GET_SEGFIND(const int32_t* lo, const int32_t* hi, const double* extrapBelow, const double* extrapAbove,
                     const int32_t* rowlen, const int32_t* spare, const double* table, const int32_t* pos,
                     const double* x, int32_t* i1, int32_t* i2);

/* ---------------------------------------------------------------------------------------------------------------------
 * Nodal forces and conductivity
 *
 * The identifiers tell the kinds of elements apart whose nodal forces are put out; the host maps them to its variables.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Identifier of the nodal forces of solid elements: 1.
 *  @param[out] id  (1), -: identifier
 */
void SPX_GET_SOLIDNFORCID(int32_t* id);

/** Identifier of the nodal forces of shells: 2.
 *  @like SPX_GET_SOLIDNFORCID
 */
void SPX_GET_SHELLNFORCID(int32_t* id);

/** Identifier of the nodal forces of beams: 3.
 *  @like SPX_GET_SOLIDNFORCID
 */
void SPX_GET_BEAMNFORCID(int32_t* id);

/** Identifier of the nodal forces of user elements: 4.
 *  @like SPX_GET_SOLIDNFORCID
 */
void SPX_GET_USERNFORCID(int32_t* id);

/** Conductivity matrix of a material without dependences, in a plane, the same at all points.  A count of constants that is none
 *  of the codes leaves K as it is.
 *  @param[in]  nblock     (1), block: points
 *  @param[in]  ncons      (1), code 1|2|3: 1 isotropic; 2 orthotropic: 11 22; 3 anisotropic: 11 22 12
 *  @param[in]  constants  (3), W/(m K): as many constants as ncons says
 *  @param[out] K          (nblock, 2, 2), W/(m K): symmetric matrix
 */
void SPX_GET_CONSTCONDUCTIVITY2D(const int32_t* nblock, const int32_t* ncons, const double* constants, double* K);

/** Conductivity matrix of a material without dependences, in space.  A count of constants that is none of the codes leaves K as it
 *  is.
 *  @like SPX_GET_CONSTCONDUCTIVITY2D
 *  @param[in]  ncons      (1), code 1|3|6: 1 isotropic; 3 orthotropic: 11 22 33; 6 anisotropic: 11 22 33 12 23 13
 *  @param[in]  constants  (6), W/(m K): as many constants as ncons says
 *  @param[out] K          (nblock, 3, 3), W/(m K): symmetric matrix
 */
void SPX_GET_CONSTCONDUCTIVITY3D(const int32_t* nblock, const int32_t* ncons, const double* constants, double* K);

#ifdef __cplusplus
}
#endif

#endif
