// Half a bar of 0.04 x 0.008 x 0.003 m with a waist of 0.007 m in its middle, which is at x = 0.
length = 0.02;
width = 0.008;
waist = 0.007;
thickness = 0.003;

Point(1) = {0, -waist / 2, 0};
Point(2) = {0, waist / 2, 0};
Point(3) = {length / 4, -width / 2, 0};
Point(4) = {length / 4, width / 2, 0};
Point(5) = {length, -width / 2, 0};
Point(6) = {length, width / 2, 0};
Line(1) = {1, 2};
Line(2) = {3, 4};
Line(3) = {5, 6};
Line(4) = {1, 3};
Line(5) = {2, 4};
Line(6) = {3, 5};
Line(7) = {4, 6};
Curve Loop(1) = {4, 2, -5, -1};
Curve Loop(2) = {6, 3, -7, -2};
Plane Surface(1) = {1};
Plane Surface(2) = {2};
Transfinite Curve {1, 2, 3} = 5;
Transfinite Curve {4, 5} = 5;
Transfinite Curve {6, 7} = 9;
Transfinite Surface {1, 2};
Recombine Surface {1, 2};
bar[] = Extrude {0, 0, thickness} { Surface{1, 2}; Layers{2}; Recombine; };

Physical Volume("bar") = {bar[1], bar[7]};
Physical Surface("middle") = {bar[5]};
Physical Surface("end") = {bar[9]};

Mesh.MshFileVersion = 4.1;
