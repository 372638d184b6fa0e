// A quarter of a tube, bore 1 m, outside 2 m in radius, a slice of 0.1 m: n bricks through the wall, m around.
n = 12;
m = 20;

Point(1) = {1, 0, 0};
wall[] = Extrude {1, 0, 0} { Point{1}; Layers{n}; };
quarter[] = Extrude { {0, 0, 1}, {0, 0, 0}, Pi / 2 } { Line{wall[1]}; Layers{m}; Recombine; };
slice[] = Extrude {0, 0, 0.1} { Surface{quarter[1]}; Layers{1}; Recombine; };

Physical Volume("tube") = {slice[1]};
Physical Surface("ends") = {quarter[1], slice[0]};
Physical Surface("plane y") = {slice[2]}; // y = 0
Physical Surface("plane x") = {slice[4]}; // x = 0
Physical Surface("outside") = {slice[3]};
Physical Surface("bore") = {slice[5]};

Mesh.MshFileVersion = 4.1;
