// The user's guide, which ui/guide.mjs reads when the page is built.
declare module 'guide' {
  const sections: readonly { title: string; html: string }[];
  export default sections;
}
