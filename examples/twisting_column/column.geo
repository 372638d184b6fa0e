// A column of 1 x 1 x 6 m, meshed with cubes: n over the width, 6 n over the height.
n = 10;
width = 1;
height = 6;

Point(1) = {-width / 2, -width / 2, 0};
line[] = Extrude {width, 0, 0} { Point{1}; Layers{n}; };
square[] = Extrude {0, width, 0} { Line{line[1]}; Layers{n}; Recombine; };
column[] = Extrude {0, 0, height} { Surface{square[1]}; Layers{6 * n}; Recombine; };

Physical Volume("column") = {column[1]};
Physical Surface("base") = {square[1]};
Physical Surface("top") = {column[0]};
Physical Surface("sides") = {column[2], column[3], column[4], column[5]};

Mesh.MshFileVersion = 4.1;
