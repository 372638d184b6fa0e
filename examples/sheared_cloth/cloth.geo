// A strip of cloth of 0.1 x 0.04 m and 2 mm, one layer of bricks.  The rows of nodes at its short edges are groups of edges.
length = 0.1;
height = 0.04;
thickness = 0.002;
rows = 4;

Point(1) = {0, 0, 0};
across[] = Extrude {0, 0, thickness} { Point{1}; Layers{1}; };
row[] = Extrude {length, 0, 0} { Line{across[1]}; Layers{10}; Recombine; };
bottom = row[1];
start[0] = across[1];
end[0] = row[0];
sheet[0] = bottom;
For k In {0 : rows - 1}
  cloth[] = Extrude {0, height / rows, 0} { Surface{sheet[k]}; Layers{1}; Recombine; };
  sheet[k + 1] = cloth[0];
  volume[k] = cloth[1];
EndFor

Physical Volume("cloth") = {volume[]};
Physical Surface("bottom") = {bottom};
Physical Surface("top") = {sheet[rows]};
For k In {1 : rows - 1}
  Physical Curve(Sprintf("row %g", k)) = {Curve In BoundingBox {-1e-6, k * height / rows - 1e-6, -1e-6, 1e-6, k * height / rows + 1e-6, 1},
                                          Curve In BoundingBox {length - 1e-6, k * height / rows - 1e-6, -1e-6, length + 1e-6, k * height / rows + 1e-6, 1}};
EndFor

Mesh.MshFileVersion = 4.1;
