// A bar of 0.01 x 0.01 x 0.1 m, n bricks long, 2 x 2 across.
n = 100;
length = 0.1;
side = 0.01;

Point(1) = {0, 0, 0};
line[] = Extrude {side, 0, 0} { Point{1}; Layers{2}; };
square[] = Extrude {0, side, 0} { Line{line[1]}; Layers{2}; Recombine; };
bar[] = Extrude {0, 0, length} { Surface{square[1]}; Layers{n}; Recombine; };

Physical Volume("bar") = {bar[1]};
Physical Surface("face") = {square[1]};
Physical Surface("tail") = {bar[0]};

Mesh.MshFileVersion = 4.1;
