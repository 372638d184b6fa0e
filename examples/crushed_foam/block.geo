// A cube of 0.1 m, n bricks along each edge.
n = 5;
edge = 0.1;

Point(1) = {0, 0, 0};
line[] = Extrude {edge, 0, 0} { Point{1}; Layers{n}; };
square[] = Extrude {0, edge, 0} { Line{line[1]}; Layers{n}; Recombine; };
block[] = Extrude {0, 0, edge} { Surface{square[1]}; Layers{n}; Recombine; };

Physical Volume("block") = {block[1]};
Physical Surface("bottom") = {square[1]};
Physical Surface("top") = {block[0]};

Mesh.MshFileVersion = 4.1;
