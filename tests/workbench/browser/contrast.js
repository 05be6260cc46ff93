// The contrast of every text in view with the ground behind it, as WCAG 2 reckons it. Returns the
// texts that fall short: [text, contrast, wanted]. An expression, to be evaluated in a page.
(() => {
  const canvas = document.createElement("canvas").getContext("2d", { willReadFrequently: true });

  /** [red, green, blue, alpha] of a CSS colour; alpha from 0 to 1. */
  function colour(css) {
    canvas.clearRect(0, 0, 1, 1);
    canvas.fillStyle = css;
    canvas.fillRect(0, 0, 1, 1);
    const [red, green, blue, alpha] = canvas.getImageData(0, 0, 1, 1).data;
    return [red, green, blue, alpha / 255];
  }

  function over([red, green, blue, alpha], [r, g, b]) {
    const mix = (front, back) => front * alpha + back * (1 - alpha);
    return [mix(red, r), mix(green, g), mix(blue, b), 1];
  }

  /** The ground of an element: what its ancestors paint, one over the other. */
  function ground(element) {
    const layers = [];
    for (let one = element; one; one = one.parentElement) {
      const layer = colour(getComputedStyle(one).backgroundColor);
      layers.push(layer);
      if (layer[3] === 1) {
        break;
      }
    }
    return layers.reverse().reduce((back, front) => over(front, back), [255, 255, 255, 1]);
  }

  function luminance([red, green, blue]) {
    const [r, g, b] = [red, green, blue].map((part) => {
      const share = part / 255;
      return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  }

  function contrast(one, other) {
    const [light, dark] = [luminance(one), luminance(other)].sort((a, b) => b - a);
    return (light + 0.05) / (dark + 0.05);
  }

  const short = [];
  let count = 0;
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    const text = walker.currentNode.data.trim();
    if (text === "" || !element.checkVisibility({ opacityProperty: true, visibilityProperty: true })) {
      continue;
    }
    const style = getComputedStyle(element);
    const back = ground(element);
    const size = parseFloat(style.fontSize);
    const isLarge = size >= 24 || (size >= 18.66 && Number(style.fontWeight) >= 700);
    const wanted = isLarge ? 3 : 4.5;
    const found = contrast(over(colour(style.color), back), back);
    count += 1;
    if (found < wanted) {
      short.push([text.slice(0, 60), element.className, Number(found.toFixed(2)), wanted]);
    }
  }
  return { count, short };
})()
