// Materials as a careful author would write them without the library: one point after the other, with the C library's
// exp, log and erfc.  Arrays are those of the kernel, in the order of its arguments behind the number of points.
#pragma once

#include <vector>

namespace plain {

using Arrays = std::vector<double*>;

void hyperpoly6s33(int n, const Arrays& a);
void hyperabs33(int n, const Arrays& a);
void hyperab3dexp(int n, const Arrays& a);
void hypervdw3dexp(int n, const Arrays& a);
void hyperinvs33(int n, const Arrays& a);
void ogden(int n, const Arrays& a);
void ogdenderivative1(int n, const Arrays& a);
void hyperogdenpsexp(int n, const Arrays& a);
void hfoam(int n, const Arrays& a);
void hyperfoammoduliexp(int n, const Arrays& a);
void ormullins(int n, const Arrays& a);
void mullinsdamageener(int n, const Arrays& a);
void stressratio3dexp(int n, const Arrays& a);
void jcshrfailexp(int n, const Arrays& a);
void jcfailurestrain(int n, const Arrays& a);

} // namespace plain
