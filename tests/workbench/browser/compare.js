// How far two pictures of the page are from each other, coarsely: other fonts and small shifts of text
// count little, another layout, theme or panel counts much. An expression: a function of two data
// addresses and of the boxes [x, y, width, height] that are left out. It returns the sizes of both and, when those
// are the same, `mean` and `worst`: the difference of the cells' mean colours, from 0 to 1, as the
// mean of all cells and as the mean of the fiftieth of them that differ most.
(async (one, other, boxes) => {
  const CELL = 30;

  async function read(address) {
    const image = new Image();
    image.src = address;
    await image.decode();
    const canvas = document.createElement("canvas");
    canvas.width = image.naturalWidth;
    canvas.height = image.naturalHeight;
    const context = canvas.getContext("2d", { willReadFrequently: true });
    context.drawImage(image, 0, 0);
    context.fillStyle = "grey";
    boxes.forEach((box) => context.fillRect(...box));
    return context.getImageData(0, 0, canvas.width, canvas.height);
  }

  /** The mean colour of each cell, one after the other. */
  function cells({ width, height, data }) {
    const columns = Math.ceil(width / CELL);
    const sums = new Float64Array(columns * Math.ceil(height / CELL) * 4);
    for (let at = 0; at < data.length; at += 4) {
      const x = (at / 4) % width;
      const y = Math.floor(at / 4 / width);
      const cell = (Math.floor(y / CELL) * columns + Math.floor(x / CELL)) * 4;
      for (let channel = 0; channel < 3; channel += 1) {
        sums[cell + channel] += data[at + channel];
      }
      sums[cell + 3] += 1;
    }
    return Array.from({ length: sums.length / 4 }, (_, cell) =>
      [0, 1, 2].map((channel) => sums[cell * 4 + channel] / sums[cell * 4 + 3] / 255),
    );
  }

  const pictures = [await read(one), await read(other)];
  const sizes = pictures.map(({ width, height }) => [width, height]);
  if (String(sizes[0]) !== String(sizes[1])) {
    return { sizes };
  }
  const [first, second] = pictures.map(cells);
  const differences = first.map((colour, cell) =>
    Math.max(...colour.map((part, channel) => Math.abs(part - second[cell][channel]))),
  );
  const mean = (numbers) => numbers.reduce((sum, number) => sum + number, 0) / numbers.length;
  const sorted = differences.sort((a, b) => b - a);
  return { sizes, mean: mean(sorted), worst: mean(sorted.slice(0, Math.ceil(sorted.length / 50))) };
})
