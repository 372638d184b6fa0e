// A cube of foam, 0.1 m, n bricks along each edge, under a load of 0.05 m.
n = 5;
edge = 0.1;
load = 0.05;

Point(1) = {0, 0, 0};
line[] = Extrude {edge, 0, 0} { Point{1}; Layers{n}; };
square[] = Extrude {0, edge, 0} { Line{line[1]}; Layers{n}; Recombine; };
foam[] = Extrude {0, 0, edge} { Surface{square[1]}; Layers{n}; Recombine; };
load[] = Extrude {0, 0, load} { Surface{foam[0]}; Layers{2}; Recombine; };

Physical Volume("foam") = {foam[1]};
Physical Volume("load") = {load[1]};
Physical Surface("top") = {foam[0]};

Mesh.MshFileVersion = 4.1;
