// A cylinder of 0.05 m radius and 0.2 m height below a steel disc of 0.02 m: a square within four sectors.
radius = 0.05;
core = 0.02;
height = 0.2;
disc = 0.02;

Point(1) = {0, 0, 0};
For k In {0 : 3}
  c = Cos(Pi / 4 + k * Pi / 2);
  s = Sin(Pi / 4 + k * Pi / 2);
  Point(2 + k) = {core * c, core * s, 0};
  Point(6 + k) = {radius * c, radius * s, 0};
EndFor
For k In {0 : 3}
  Line(1 + k) = {2 + k, 2 + (k + 1) % 4};
  Circle(5 + k) = {6 + k, 1, 6 + (k + 1) % 4};
  Line(9 + k) = {2 + k, 6 + k};
EndFor
For k In {0 : 3}
  Curve Loop(1 + k) = {9 + k, 5 + k, -(9 + (k + 1) % 4), -(1 + k)};
  Plane Surface(1 + k) = {1 + k};
EndFor
Curve Loop(5) = {1, 2, 3, 4};
Plane Surface(5) = {5};
Transfinite Curve {1 : 8} = 4;
Transfinite Curve {9 : 12} = 3;
Transfinite Surface {1 : 5};
Recombine Surface {1 : 5};

concrete[] = Extrude {0, 0, height} { Surface{1 : 5}; Layers{16}; Recombine; };
tops[] = {concrete[0], concrete[6], concrete[12], concrete[18], concrete[24]};
steel[] = Extrude {0, 0, disc} { Surface{tops[]}; Layers{2}; Recombine; };

Physical Volume("concrete") = {concrete[1], concrete[7], concrete[13], concrete[19], concrete[25]};
Physical Volume("steel") = {steel[1], steel[7], steel[13], steel[19], steel[25]};
Physical Surface("foot") = {1 : 5};
Physical Surface("head") = {steel[0], steel[6], steel[12], steel[18], steel[24]};

Mesh.MshFileVersion = 4.1;
