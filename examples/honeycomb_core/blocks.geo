// Two cubes of 0.06 m beside each other, n bricks along each edge.
n = 3;
edge = 0.06;

For k In {0 : 1}
  p = newp;
  Point(p) = {0, 2 * k * edge, 0};
  line[] = Extrude {edge, 0, 0} { Point{p}; Layers{n}; };
  square[] = Extrude {0, edge, 0} { Line{line[1]}; Layers{n}; Recombine; };
  cube[] = Extrude {0, 0, edge} { Surface{square[1]}; Layers{n}; Recombine; };
  volume[k] = cube[1];
  back[k] = cube[5];
  front[k] = cube[3];
  left[k] = cube[2];
  right[k] = cube[4];
EndFor

Physical Volume("along") = {volume[0]};
Physical Volume("across") = {volume[1]};
Physical Surface("along foot") = {back[0]};
Physical Surface("along head") = {front[0]};
Physical Surface("across foot") = {left[1]};
Physical Surface("across head") = {right[1]};

Mesh.MshFileVersion = 4.1;
