// Checks for any state of the page.
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

// Returns the findings of axe, one line for each rule.
export async function axeFinds(page) {
  await page.evaluate(axe);
  const { violations } = await page.evaluate(() =>
    window.axe.run(document, { rules: { 'color-contrast': { enabled: true } } }),
  );
  return violations.map(
    (one) => `${one.impact} ${one.id}: ${one.nodes.map((node) => node.html).join(' | ')}`,
  );
}

// Returns the texts that have less space than they need.
export const cutOffTexts = (page) =>
  page.evaluate(() =>
    [...document.querySelectorAll('button, .segmented span, .toggle span:last-child, .group__hint, .key-cap')]
      .filter((element) => element.scrollWidth > element.clientWidth + 1)
      .map((element) => element.innerText),
  );

// Returns the number of elements with an animation or a transition.
export const animatedElements = (page) =>
  page.evaluate(
    () =>
      [...document.querySelectorAll('*')].filter((element) => {
        const style = getComputedStyle(element);
        const longest = Math.max(...style.transitionDuration.split(',').map((text) => parseFloat(text)));
        return longest > 0 || style.animationName !== 'none';
      }).length,
  );

// Runs in the page. Returns [element, contrast, least contrast] by the luminance and contrast of WCAG 2.
export const contrastOf = () => {
  const channels = (text) => text.match(/[\d.]+/g).map(Number);
  const opaque = (text) => (channels(text)[3] ?? 1) > 0.99;
  const luminance = (text) => {
    const [r, g, b] = channels(text)
      .slice(0, 3)
      .map((value) => value / 255)
      .map((value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4));
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const ratio = (a, b) => {
    const [high, low] = [luminance(a), luminance(b)].sort((x, y) => y - x);
    return (high + 0.05) / (low + 0.05);
  };
  const behind = (element) => {
    for (let at = element; at; at = at.parentElement) {
      const colour = getComputedStyle(at).backgroundColor;
      if (opaque(colour)) return colour;
    }
    return 'rgb(255, 255, 255)';
  };
  const disabled = (element) =>
    element.closest(':disabled, [aria-disabled]') ||
    element.closest('label')?.querySelector(':disabled') ||
    element.closest('.number--disabled');
  const found = [];
  const check = (what, a, b, least) => found.push([what, Math.round(ratio(a, b) * 100) / 100, least]);

  for (const element of document.querySelectorAll('body *')) {
    if (!element.checkVisibility()) continue;
    const style = getComputedStyle(element);
    const ownText = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
    if (ownText || element.matches('input[type=text]')) {
      const what = `${element.className || element.tagName}: ${element.textContent.slice(0, 30)}`;
      check(what, style.color, behind(element), disabled(element) ? 3 : 4.5);
    }
    if (disabled(element)) continue;
    // A control stands out from its surroundings by its border or its own background.
    if (
      element.matches(
        '.button:not(.button--quiet), .number, .segmented, .toggle__track, .list, .targets, .list-box__button, .list-box__list, .filter__chip, .pointer-path, .strip__lanes',
      )
    ) {
      const around = behind(element.parentElement);
      const best = Math.max(ratio(style.borderTopColor, around), ratio(behind(element), around));
      found.push([`edge of ${element.className}`, Math.round(best * 100) / 100, 3]);
    }
    if (element.matches('.findings-timeline__lane, .findings-timeline__line')) {
      const drawn = element.matches('.findings-timeline__line') ? style.borderBottomColor : style.color;
      check(element.className, drawn, behind(element), 3);
    }
    if (element.matches('.icon, .state-line__lamp, .toggle__knob')) {
      const face = element.matches('.icon') ? style.color : style.backgroundColor;
      check(`${element.getAttribute('class')}`, face, behind(element.parentElement), 3);
    }
  }
  // The focus ring on every background.
  const focus = document.createElement('i');
  document.body.append(focus);
  const token = (name) => {
    focus.style.color = `var(${name})`;
    return getComputedStyle(focus).color;
  };
  for (const ground of [
    '--bg-main',
    '--bg-panel',
    '--bg-header',
    '--bg-field',
    '--bg-control',
    '--bg-chosen',
  ]) {
    check(`focus on ${ground}`, token('--focus'), token(ground), 3);
  }
  for (const face of [
    '--bg-control',
    '--bg-control-hover',
    '--bg-control-active',
    '--bg-chosen',
    '--bg-key',
  ]) {
    check(`text on ${face}`, token('--text'), token(face), 4.5);
  }
  check('text on accent hover', token('--on-accent'), token('--accent-hover'), 4.5);
  check('text on stop hover', token('--on-stop'), token('--stop-hover'), 4.5);
  focus.remove();
  return found;
};
