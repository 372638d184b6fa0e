// A quarter of a plate, 0.04 x 0.002 x 0.08 m with a hole of 0.008 m in its middle, and half of its thickness.
hole = 0.004;
half = 0.02;
end = 0.04;
around = 8;  // bricks in an eighth of the hole's edge
out = 14;    // from the hole to the edge of the plate
beyond = 6;  // from there to the end

c = hole * Sqrt(0.5);
Point(1) = {0, 0, 0};
Point(2) = {hole, 0, 0};
Point(3) = {c, 0, c};
Point(4) = {0, 0, hole};
Point(5) = {half, 0, 0};
Point(6) = {half, 0, half};
Point(7) = {0, 0, half};
Point(8) = {half, 0, end};
Point(9) = {0, 0, end};
Circle(1) = {2, 1, 3};
Circle(2) = {3, 1, 4};
Line(3) = {2, 5};
Line(4) = {3, 6};
Line(5) = {4, 7};
Line(6) = {5, 6};
Line(7) = {6, 7};
Line(8) = {6, 8};
Line(9) = {8, 9};
Line(10) = {9, 7};
Curve Loop(1) = {3, 6, -4, -1};
Curve Loop(2) = {4, 7, -5, -2};
Curve Loop(3) = {8, 9, 10, -7};
Plane Surface(1) = {1};
Plane Surface(2) = {2};
Plane Surface(3) = {3};
Transfinite Curve {1, 2, 6, 7, 9} = around + 1;
Transfinite Curve {3, 4, 5} = out + 1 Using Progression 1.16;
Transfinite Curve {8, -10} = beyond + 1;
Transfinite Surface {1, 2, 3};
Recombine Surface {1, 2, 3};
plate[] = Extrude {0, -0.001, 0} { Surface{1, 2, 3}; Layers{1}; Recombine; };

Physical Volume("plate") = {plate[1], plate[7], plate[13]};
Physical Surface("middle") = {1, 2, 3};
Physical Surface("plane z") = {plate[2]};
Physical Surface("plane x") = {plate[10], plate[16]};
Physical Surface("end") = {plate[15]};

Mesh.MshFileVersion = 4.1;
