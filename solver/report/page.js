"use strict";
// The values under the pointer, or by the arrow keys, beside the names of the curves.
const charts = JSON.parse(document.getElementById("numbers").textContent);
const svg = (name, parent, attributes) => {
  const element = document.createElementNS(parent.namespaceURI, name);
  for (const key in attributes) element.setAttribute(key, attributes[key]);
  return parent.appendChild(element);
};
const text = (value) => value === null ? "-" : String(Number(value.toPrecision(7)));
for (const figure of document.querySelectorAll("figure.chart")) {
  const chart = charts[Number(figure.dataset.chart)], drawing = figure.querySelector("svg");
  const [x0, x1, y0, y1] = chart.range, [left, upper, width, height] = chart.box;
  const part = (value, low, high) => (value / 4 - low / 4) / (high / 4 - low / 4);
  const legend = [...figure.querySelectorAll(".legend li")].map((item) => item.appendChild(document.createElement("b")));
  const caption = figure.querySelector("figcaption"), title = caption.textContent;
  const marks = svg("g", drawing, { visibility: "hidden" });
  const line = svg("path", marks, { class: "cursor" });
  const dots = chart.values.map((_, k) => svg("circle", marks, { r: 3.5, class: "s" + k % 10 }));
  let shown = -1;
  const show = (row) => {
    shown = row;
    const time = chart.time[row], x = left + width * part(time, x0, x1);
    marks.setAttribute("visibility", "visible");
    line.setAttribute("d", `M${x} ${upper}v${height}`);
    caption.textContent = `${title}, at ${text(time)} s`;
    chart.values.forEach((values, k) => {
      const value = values[row];
      dots[k].setAttribute("visibility", value === null ? "hidden" : "inherit");
      if (value !== null) {
        dots[k].setAttribute("cx", x);
        dots[k].setAttribute("cy", upper + height * (1 - part(value, y0, y1)));
      }
      legend[k].textContent = " " + text(value);
    });
  };
  const hide = () => {
    shown = -1;
    marks.setAttribute("visibility", "hidden");
    caption.textContent = title;
    for (const value of legend) value.textContent = "";
  };
  drawing.addEventListener("pointermove", (event) => {
    const point = new DOMPoint(event.clientX, event.clientY).matrixTransform(drawing.getScreenCTM().inverse());
    const place = (point.x - left) / width;
    let row = -1, best = Infinity;
    chart.time.forEach((time, k) => {
      const distance = time === null ? Infinity : Math.abs(part(time, x0, x1) - place);
      if (distance < best) [row, best] = [k, distance];
    });
    if (row >= 0) show(row);
  });
  drawing.addEventListener("pointerleave", hide);
  drawing.addEventListener("blur", hide);
  drawing.addEventListener("keydown", (event) => {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!step) return;
    const row = Math.min(Math.max(shown + step, 0), chart.time.length - 1);
    if (chart.time[row] !== null) show(row);
    event.preventDefault();
  });
}
