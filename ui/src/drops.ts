// Cancels drag and drop, of text too. A view that takes the drop of a link or a file would open it in place of the page.
// The program refuses that as well; here the pointer shows it before the drop.
export function refuseDrops(): void {
  const cancel = (event: DragEvent) => {
    event.preventDefault();
    if (event.dataTransfer) event.dataTransfer.dropEffect = 'none';
  };
  for (const type of ['dragstart', 'dragenter', 'dragover', 'drop'] as const) {
    window.addEventListener(type, cancel, { capture: true });
  }
}
