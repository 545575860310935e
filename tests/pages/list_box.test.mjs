// The list box of the page: by pointer, by keyboard, for screen readers, and in windows of any size.
import {
  assert,
  button,
  callsOf,
  chooseProfile,
  describe,
  expectCall,
  focused,
  pageTest,
  picture,
  profileBox,
  profileNames,
  settled,
} from './page_test.mjs';
import { axeFinds, contrastOf } from './page_checks.mjs';

const kNames = ['Default Tracking Profile', 'Farm', 'Fishing spot', 'fish market', 'Mine', 'Zoo'];
const kProfiles = { profiles: { names: kNames, current: 1 } };
const kManyProfiles = {
  profiles: { names: Array.from({ length: 60 }, (_, i) => `Profile ${i}`), current: 30 },
};
const list = (page) => page.getByRole('listbox', { name: 'Profile', exact: true });
const isOpen = async (page) => (await profileBox(page).getAttribute('aria-expanded')) === 'true';

// The option that a screen reader announces: the one at the keyboard cursor.
const active = (page) =>
  page.evaluate(() => {
    const id = document.activeElement.getAttribute('aria-activedescendant');
    return id && document.getElementById(id).innerText.trim();
  });

describe('by pointer', () => {
  pageTest('opens, marks the chosen option, and chooses another', kProfiles, async (page) => {
    assert.equal(await list(page).count(), 0);
    await profileBox(page).click();
    assert.deepEqual(await list(page).getByRole('option').allInnerTexts(), kNames);
    assert.equal(await list(page).getByRole('option', { selected: true }).innerText(), 'Farm');
    assert.equal(await profileBox(page).getAttribute('aria-controls'), await list(page).getAttribute('id'));
    await list(page).getByRole('option', { name: 'Mine' }).click();
    assert.deepEqual(await expectCall(page, 'switchProfile'), ['4']);
    assert.equal(await list(page).count(), 0);
    assert.equal(await focused(page), 'Profile');
    await settled(page);
    assert.equal(await profileBox(page).innerText(), 'Mine');
  });

  pageTest('the option under the pointer is the one at the cursor', kProfiles, async (page) => {
    await profileBox(page).click();
    await list(page).getByRole('option', { name: 'Zoo' }).hover();
    assert.equal(await active(page), 'Zoo');
    await page.keyboard.press('ArrowUp');
    assert.equal(await active(page), 'Mine');
  });

  pageTest('a second press or a press elsewhere closes it and changes nothing', kProfiles, async (page) => {
    await profileBox(page).click();
    await profileBox(page).click();
    assert.equal(await list(page).count(), 0);
    await profileBox(page).click();
    await button(page, 'Add key').focus();
    assert.equal(await list(page).count(), 0);
    assert.deepEqual(await callsOf(page, 'switchProfile'), []);
  });

  pageTest('the chosen option again changes nothing', kProfiles, async (page) => {
    await chooseProfile(page, 'Farm');
    await settled(page);
    assert.deepEqual(await callsOf(page, 'switchProfile'), []);
  });
});

describe('by keyboard', () => {
  for (const key of ['ArrowDown', 'ArrowUp', 'Enter', 'Space', 'Alt+ArrowDown']) {
    pageTest(`${key} opens it at the chosen option`, kProfiles, async (page) => {
      await profileBox(page).press(key);
      assert.equal(await active(page), 'Farm');
      assert.deepEqual(await callsOf(page, 'switchProfile'), []);
    });
  }

  pageTest(
    'arrows, page keys, Home and End move the cursor and stop at the ends',
    kProfiles,
    async (page) => {
      await profileBox(page).press('ArrowDown');
      for (const [key, name] of [
        ['ArrowDown', 'Fishing spot'],
        ['End', 'Zoo'],
        ['ArrowDown', 'Zoo'],
        ['ArrowUp', 'Mine'],
        ['Home', 'Default Tracking Profile'],
        ['ArrowUp', 'Default Tracking Profile'],
        ['PageDown', 'Zoo'],
        ['PageUp', 'Default Tracking Profile'],
      ]) {
        await page.keyboard.press(key);
        assert.equal(await active(page), name, key);
      }
      assert.deepEqual(await callsOf(page, 'switchProfile'), []);
    },
  );

  for (const key of ['Enter', 'Space', 'Tab']) {
    pageTest(`${key} chooses the option at the cursor`, kProfiles, async (page) => {
      await profileBox(page).press('End');
      await page.keyboard.press(key);
      assert.deepEqual(await expectCall(page, 'switchProfile'), ['5']);
      assert.equal(await isOpen(page), false);
      assert.equal((await focused(page)) === 'Profile', key !== 'Tab');
    });
  }

  pageTest('Esc closes it and changes nothing', kProfiles, async (page) => {
    await profileBox(page).press('End');
    await page.keyboard.press('Escape');
    assert.equal(await isOpen(page), false);
    assert.equal(await focused(page), 'Profile');
    assert.deepEqual(await callsOf(page, 'switchProfile'), []);
    await profileBox(page).press('Enter');
    assert.equal(await active(page), 'Farm');
  });

  pageTest('typed letters find an option, in any case', kProfiles, async (page) => {
    await profileBox(page).focus();
    await page.keyboard.type('mi');
    assert.equal(await active(page), 'Mine');
    await page.keyboard.press('Escape');
    await page.waitForFunction(
      (since) => performance.now() > since + 800,
      await page.evaluate('performance.now()'),
    );
    await page.keyboard.type('FISH M');
    assert.equal(await active(page), 'fish market');
    await page.keyboard.press('Enter');
    assert.deepEqual(await expectCall(page, 'switchProfile'), ['3']);
  });

  pageTest('one letter again and again goes through its options', kProfiles, async (page) => {
    await profileBox(page).press('Home');
    const found = [];
    for (let i = 0; i < 4; i++) {
      await page.keyboard.press('f');
      found.push(await active(page));
    }
    assert.deepEqual(found, ['Farm', 'Fishing spot', 'fish market', 'Farm']);
    await page.keyboard.press('q');
    assert.equal(await active(page), 'Farm', 'a letter that fits nothing moves nothing');
  });
});

pageTest('closes when the profiles change or a recording starts', kProfiles, async (page) => {
  await profileBox(page).click();
  await page.host.setStatus({ state: 'Recording' });
  assert.equal(await list(page).count(), 0);
  assert.ok(await profileBox(page).isDisabled());
  await page.host.setStatus({ state: 'Idle' });
  assert.equal(await list(page).count(), 0);
});

for (const [height, current] of [
  [700, 30],
  [300, 59],
]) {
  pageTest(
    `a long list stays in a window of ${height} px and shows its chosen option`,
    { viewport: { width: 420, height }, ...kManyProfiles, profiles: { ...kManyProfiles.profiles, current } },
    async (page) => {
      await profileBox(page).click();
      const box = await list(page).boundingBox();
      assert.ok(box.x >= 0 && box.x + box.width <= 420 && box.y >= 0 && box.y + box.height <= height);
      const row = await list(page).getByRole('option', { selected: true }).boundingBox();
      assert.ok(row.y >= box.y && row.y + row.height <= box.y + box.height);
      await picture(page, `list-box-${height}`);
    },
  );
}

pageTest(
  'opens above its button if there is more space',
  { viewport: { width: 420, height: 500 }, ...kManyProfiles },
  async (page) => {
    // The panel moves to the end of the page, and the page to its end.
    await page.evaluate(() => {
      const panel = document.getElementById('panel-profile');
      panel.style.order = '1';
      scrollTo(0, document.documentElement.scrollHeight);
    });
    await button(page, 'Profile: show settings').click();
    await page.evaluate(() => scrollTo(0, document.documentElement.scrollHeight));
    await profileBox(page).click();
    const [box, field] = [await list(page).boundingBox(), await profileBox(page).boundingBox()];
    assert.ok(box.y + box.height <= field.y && box.y >= 82, JSON.stringify([box, field]));
  },
);

for (const width of [360, 1000]) {
  pageTest(
    `has no axe finding and enough contrast at ${width}`,
    { viewport: { width, height: 600 }, ...kProfiles },
    async (page) => {
      await profileBox(page).click();
      await picture(page, `list-box-open-${width}`);
      assert.deepEqual(await axeFinds(page), []);
      const found = await page.evaluate(contrastOf);
      assert.deepEqual(
        found.filter(([, ratio, least]) => ratio < least),
        [],
      );
      const box = await list(page).boundingBox();
      assert.ok(box.x >= 0 && box.x + box.width <= width);
    },
  );
}

pageTest(
  'shows a name of any length and any letters as text',
  {
    profiles: { names: ['<b>x</b>', 'W'.repeat(60)], current: 0 },
  },
  async (page) => {
    assert.equal(await profileBox(page).innerText(), '<b>x</b>');
    assert.deepEqual(await profileNames(page), ['<b>x</b>', 'W'.repeat(60)]);
    assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= 420);
  },
);
